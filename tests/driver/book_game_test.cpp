// The opening book in play, end to end: book moves answered at once, the console listing, the end
// of the book, "bk", and the book words' replies with a real file.

#include <gtest/gtest.h>

#include <cstdint>
#include <regex>
#include <string>
#include <vector>

#include "driver/transcript.h"

namespace {

constexpr uint64_t START_KEY    = 0x463B96181691FC9CULL; // start position
constexpr uint64_t AFTER_E4_KEY = 0x823C9B50FD114196ULL; // after 1.e4

struct BookEntry {
    uint64_t key;
    const char* move;
    uint16_t weight;
};

void put_big_endian(std::string& out, uint64_t v, int bytes) {
    for (int i = bytes - 1; i >= 0; --i)
        out.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

// Entries must be given in key order; the move text is written as the book's from/to word.
std::string make_book(const std::vector<BookEntry>& entries) {
    std::string bytes;
    for (const auto& e : entries) {
        const unsigned from = static_cast<unsigned>(e.move[0] - 'a' + 8 * (e.move[1] - '1'));
        const unsigned to   = static_cast<unsigned>(e.move[2] - 'a' + 8 * (e.move[3] - '1'));
        put_big_endian(bytes, e.key, 8);
        put_big_endian(bytes, from * 64 + to, 2);
        put_big_endian(bytes, e.weight, 2);
        put_big_endian(bytes, 0, 4);
    }
    return bytes;
}

const std::string BOOK =
    make_book({{START_KEY, "e2e4", 2}, {START_KEY, "d2d4", 1}, {AFTER_E4_KEY, "c7c5", 5}});

std::string play(const std::vector<std::string>& input) {
    EngineRun run = run_engine(input, {std::nullopt, {{"book.bin", BOOK}}});
    EXPECT_TRUE(run.exited);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    return run.out;
}

TEST(BookGame, ConsoleBookMoveWithoutSearch) {
    const std::string out = play({"book 1", "pickbest 1", "go", "list game"});
    // The thinking line reports the book move at depth 0 with no nodes.
    EXPECT_TRUE(std::regex_search(out, std::regex("found book\\.bin\n#White\\(1\\): #White\\(1\\): "
                                                  "\\{ e2e4 66% d2d4 33% \\}\nPolyglot Best Found : e2e4\n"
                                                  "move e2e4\n0 0 [0-9]+ 0 e2e4\n"
                                                  "elap: [0-9.]+\nTotal Nodes=0 nps: 0\n#Black\\(1\\): "
                                                  "1\\.e2e4 \n#Black\\(1\\): ")))
        << out;
    EXPECT_EQ(out.find("depth score time nodes pv"), std::string::npos) << out;
}

TEST(BookGame, HitBeyondBookDepthEndsTheBook) {
    // The engine answers 1.e4 from the book's position, but ply 1 lies beyond bookdepth 0.
    const std::string out         = play({"book 1", "sd 1", "e2e4", "d2d4", "bk"});
    const std::string end_of_book = "#move_number = 0   (1)\n{ c7c5 100% }\nPolyglot Random Found : c7c5\n"
                                    "End of Polglot Book\ndepth score time nodes pv\n";
    ASSERT_NE(out.find(end_of_book), std::string::npos) << out;
    // The book is closed now: the next answer is searched without a probe, and bk lists nothing.
    EXPECT_EQ(out.find("Polyglot", out.find(end_of_book) + end_of_book.size()), std::string::npos) << out;
    // On the console "bk" answers like "beep": the loop then rejects the line as a move.
    EXPECT_NE(out.find("\t\n\nIllegal move: bk\n#White(3): "), std::string::npos) << out;
}

TEST(BookGame, DeeperBookDepthPlaysTheReply) {
    const std::string out = play({"bookdepth 4", "book 1", "e2e4", "bk"});
    EXPECT_NE(out.find("#move_number = 0   (1)\n{ c7c5 100% }\nPolyglot Random Found : c7c5\nmove c7c5\n"),
              std::string::npos)
        << out;
    // After 1.e4 c5 the position is not in the book: bk shows an empty listing.
    EXPECT_NE(out.find("#White(2): \t\n\nIllegal move: bk\n#White(2): "), std::string::npos) << out;
}

TEST(BookGame, ListingForBkAndXBoardSilence) {
    EXPECT_NE(
        play({"book 1", "bk"}).find("#White(1): \t{ e2e4 66% d2d4 33% }\n\nIllegal move: bk\n#White(1): "),
        std::string::npos);
    EXPECT_NE(play({"xboard", "book 1", "bk"}).find("found book.bin\n\t{ e2e4 66% d2d4 33% }\n\n"),
              std::string::npos);
    // In XBoard mode only the move is printed.
    const std::string out = play({"xboard", "book 1", "pickbest 1", "go"});
    EXPECT_TRUE(std::regex_search(
        out, std::regex("#White\\(1\\): \nfound book\\.bin\nmove e2e4\n0 0 [0-9]+ 0 e2e4\n")))
        << out;
    EXPECT_EQ(out.find("Polyglot"), std::string::npos) << out;
}

TEST(BookGame, BookWordsWithAFile) {
    const std::string out =
        play({"book", "book 1", "book", "bookname \"other.bin\"", "book 1", "book off", "book"});
    const std::string usage    = "usage:  Book 0  - no book\n        Book 1  - PolyGlot book {best move}\n";
    const std::string expected = usage +
                                 "Current Book #  - 0\n#White(1): found book.bin\n#White(1): " + usage +
                                 "Current Book #  - 1\n#White(1): book = other.bin\n#White(1): "
                                 "book_open: can't open other.bin\n#White(1): #White(1): " +
                                 usage + "Current Book #  - 0\n#White(1): ";
    EXPECT_NE(out.find(expected), std::string::npos) << out;
}

} // namespace
