#include "book/polyglot.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/keys.h"
#include "board/makemove.h"
#include "board/notation.h"
#include "driver/engine_state.h"
#include "driver/game.h"
#include "eval/tables.h"

namespace {

struct Entry {
    uint64_t key;
    uint16_t move, weight;
};

// Book move word: the same square numbering as the engine's, promotion piece in bits 12..14.
uint16_t pg(const char* text, int promo = 0) {
    return static_cast<uint16_t>((promo << 12) | (text_to_move(text) & SQUARE_BITS));
}

void put_be(std::string& out, uint64_t v, int bytes) {
    for (int i = bytes - 1; i >= 0; --i)
        out.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

// Writes the entries sorted by key (keeping the given order among equal keys), then `tail` bytes.
void write_book(const std::string& path, std::vector<Entry> entries, const std::string& tail = "") {
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& a, const Entry& b) { return a.key < b.key; });
    std::string bytes;
    for (const Entry& e : entries) {
        put_be(bytes, e.key, 8);
        put_be(bytes, e.move, 2);
        put_be(bytes, e.weight, 2);
        put_be(bytes, 0, 4);
    }
    std::ofstream(path, std::ios::binary) << bytes << tail;
}

const char* START         = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";
const char* CASTLES       = "r3k2r/pppppppp/8/8/8/8/PPPPPPPP/R3K2R w KQkq - 0 1";
const char* CASTLES_BLACK = "r3k2r/pppppppp/8/8/8/8/PPPPPPPP/R3K2R b KQkq - 0 1";

class Book : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        attack_init();
        keys_init();
        pst_tables_init();
        pawn_masks_init();
        adjacent_files_init();
    }
    // The book tests change the shared engine settings; they are put back for the other tests.
    struct Saved {
        int xboard_mode, analyze_mode, book_mode, pickbest, book_random, bookdepth, ply;
        FILE* book_file;
        std::string book_name;
    };
    void SetUp() override {
        saved = {engine.xboard_mode.load(), engine.analyze_mode, engine.book_mode, engine.pickbest,
                 engine.book_random,        engine.bookdepth,    engine.ply,       engine.book_file,
                 engine.book_name};
        game  = std::make_unique<SearchThread>();
        // One file per test and run: ctest runs tests side by side, and other runs may share /tmp.
        path = testing::TempDir() + "morvaine_book_" +
               testing::UnitTest::GetInstance()->current_test_info()->name() + "_" +
               std::to_string(std::random_device{}()) + ".bin";
        engine.xboard_mode.store(0);
        engine.analyze_mode = 0;
        engine.book_mode    = 1;
        engine.pickbest     = 1;
        engine.book_random  = 0;
        engine.bookdepth    = 100;
        engine.ply          = 0;
        engine.book_file    = nullptr;
        std::snprintf(engine.book_name, sizeof engine.book_name, "%s", path.c_str());
        book_rand_state = 1;
    }
    void TearDown() override {
        book_close();
        std::remove(path.c_str());
        engine.xboard_mode.store(saved.xboard_mode);
        engine.analyze_mode = saved.analyze_mode;
        engine.book_mode    = saved.book_mode;
        engine.pickbest     = saved.pickbest;
        engine.book_random  = saved.book_random;
        engine.bookdepth    = saved.bookdepth;
        engine.ply          = saved.ply;
        engine.book_file    = saved.book_file;
        std::snprintf(engine.book_name, sizeof engine.book_name, "%s", saved.book_name.c_str());
    }

    uint64_t key_of(const char* fen) {
        setboard(*game, fen);
        return game->key;
    }
    // Opens a book of the given entries and sets the game position.
    void open_book(const char* fen, const std::vector<Entry>& entries, const std::string& tail = "") {
        write_book(path, entries, tail);
        ASSERT_TRUE(book_open());
        setboard(*game, fen);
    }
    // Probes and returns what was printed; the move goes to `move`.
    std::string probe(Move& move) {
        testing::internal::CaptureStdout();
        move = book_probe(*game);
        return testing::internal::GetCapturedStdout();
    }

    Saved saved;
    std::unique_ptr<SearchThread> game;
    std::string path;
};

} // namespace

TEST_F(Book, ChoiceAndListing) {
    struct Row {
        const char* name;
        const char* fen;
        std::vector<std::pair<uint16_t, uint16_t>> moves; // book move, weight
        int pickbest, xboard;
        const char* want_move;
        const char* want_output;
    };
    const Row rows[] = {
        {"heaviest entry",
         START,
         {{pg("e2e4"), 2}, {pg("d2d4"), 1}},
         1,
         0,
         "e2e4",
         "{ e2e4 66% d2d4 33% }\nPolyglot Best Found : e2e4\n"},
        {"ties go to the later entry",
         START,
         {{pg("e2e4"), 3}, {pg("d2d4"), 3}},
         1,
         0,
         "d2d4",
         "{ e2e4 50% d2d4 50% }\nPolyglot Best Found : d2d4\n"},
        {"all weights zero",
         START,
         {{pg("e2e4"), 0}, {pg("g1f3"), 0}},
         1,
         0,
         "g1f3",
         "{ e2e4 0% g1f3 0% }\nPolyglot Best Found : g1f3\n"},
        {"random rule, single entry",
         START,
         {{pg("c2c4"), 7}},
         0,
         0,
         "c2c4",
         "{ c2c4 100% }\nPolyglot Random Found : c2c4\n"},
        {"random rule, weight 0 never replaces",
         START,
         {{pg("c2c4"), 1}, {pg("b1c3"), 0}},
         0,
         0,
         "c2c4",
         "{ c2c4 100% b1c3 0% }\nPolyglot Random Found : c2c4\n"},
        {"xboard mode prints nothing", START, {{pg("e2e4"), 2}, {pg("d2d4"), 1}}, 1, 1, "e2e4", ""},
        {"white castles king side",
         CASTLES,
         {{pg("e1h1"), 5}, {pg("a2a3"), 1}},
         1,
         0,
         "e1g1",
         "{ e1g1 83% a2a3 16% }\nPolyglot Best Found : e1g1\n"},
        {"white castles queen side",
         CASTLES,
         {{pg("e1a1"), 5}},
         1,
         0,
         "e1c1",
         "{ e1c1 100% }\nPolyglot Best Found : e1c1\n"},
        {"black castles king side",
         CASTLES_BLACK,
         {{pg("e8h8"), 5}},
         1,
         0,
         "e8g8",
         "{ e8g8 100% }\nPolyglot Best Found : e8g8\n"},
        {"black castles queen side",
         CASTLES_BLACK,
         {{pg("e8a8"), 5}},
         1,
         0,
         "e8c8",
         "{ e8c8 100% }\nPolyglot Best Found : e8c8\n"},
        {"king away from e1: no translation, illegal",
         "r3k2r/8/8/8/8/8/8/R4K1R w kq - 0 1",
         {{pg("e1h1"), 5}},
         1,
         0,
         nullptr,
         "{ e1h1 100% }\nPolyglot Best Found : e1h1\nIllegal move: e1h1\nIllegal:book move  buffer=e1h1 mv "
         "e1h1\n"},
        {"promotion piece is not carried over",
         "8/4P3/8/8/8/8/k7/4K3 w - - 0 1",
         {{pg("e7e8", 4), 5}},
         1,
         0,
         nullptr,
         "{ e7e8 100% }\nPolyglot Best Found : e7e8\nIllegal move: e7e8\nIllegal:book move  buffer=e7e8 mv "
         "e7e8\n"},
        {"chosen entry holds move 0", START, {{0, 9}, {pg("e2e4"), 1}}, 1, 0, nullptr, ""},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const uint64_t key         = key_of(r.fen);
        std::vector<Entry> entries = {{key - 1, pg("a2a4"), 50}, {key + 1, pg("h2h4"), 50}};
        for (const auto& [m, w] : r.moves)
            entries.push_back({key, m, w});
        open_book(r.fen, entries);
        engine.pickbest = r.pickbest;
        engine.xboard_mode.store(r.xboard);
        Move move      = 0;
        const auto out = probe(move);
        EXPECT_EQ(out, r.want_output);
        EXPECT_EQ(move, r.want_move ? text_to_move(r.want_move) : 0u);
        book_close();
    }
}

// The generator never seeded: 41, 18467, 6334, 26500, 19169, 15724, 11478, 29358, 26962, 24464,
// 5705, 28145, ... One number per entry; the second entry (weight 6) takes over when r % 6 < 3.
TEST_F(Book, RandomRuleFollowsTheGenerator) {
    const uint64_t key = key_of(START);
    open_book(START, {{key, pg("e2e4"), 4}, {key, pg("d2d4"), 6}});
    engine.pickbest        = 0;
    const char* expected[] = {"e2e4", "e2e4", "e2e4", "d2d4", "d2d4", "e2e4"};
    for (const char* want : expected) {
        SCOPED_TRACE(want);
        Move move = 0;
        EXPECT_EQ(probe(move), std::string("{ e2e4 40% d2d4 60% }\nPolyglot Random Found : ") + want + "\n");
        EXPECT_EQ(move, text_to_move(want));
    }
}

TEST_F(Book, RandomRuleBelowBookRandomPly) {
    struct Row {
        int ply;
        const char* rule;
    };
    const Row rows[]   = {{0, "Random"}, {9, "Random"}, {10, "Best"}, {30, "Best"}};
    const uint64_t key = key_of(START);
    open_book(START, {{key, pg("e2e4"), 1}, {key, pg("d2d4"), 2}});
    engine.book_random = 10;
    engine.bookdepth   = 100;
    for (const Row& r : rows) {
        SCOPED_TRACE(r.ply);
        engine.ply = r.ply;
        Move move  = 0;
        EXPECT_NE(probe(move).find(std::string("Polyglot ") + r.rule + " Found"), std::string::npos);
    }
}

TEST_F(Book, BookDepthEndsTheBook) {
    struct Row {
        const char* name;
        int bookdepth, ply, analyze;
        bool played, book_kept;
    };
    const Row rows[] = {
        {"ply 0 with depth 0 plays", 0, 0, 0, true, true},
        {"ply 1 with depth 0 ends the book", 0, 1, 0, false, false},
        {"ply equal to depth plays", 8, 8, 0, true, true},
        {"ply above depth ends the book", 8, 9, 0, false, false},
        {"analysis keeps the book", 0, 5, 1, true, true},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const uint64_t key = key_of(START);
        open_book(START, {{key, pg("e2e4"), 1}});
        engine.book_mode    = 1;
        engine.bookdepth    = r.bookdepth;
        engine.ply          = r.ply;
        engine.analyze_mode = r.analyze;
        Move move           = 0;
        const auto out      = probe(move);
        EXPECT_EQ(move, r.played ? text_to_move("e2e4") : 0u);
        EXPECT_EQ(out.find("End of Polglot Book\n") != std::string::npos, !r.book_kept);
        EXPECT_EQ(engine.book_mode, r.book_kept ? 1 : 0);
        EXPECT_EQ(engine.book_file != nullptr, r.book_kept);
        if (!r.book_kept) {
            // Later moves do not consult the book.
            EXPECT_EQ(probe(move), "");
            EXPECT_EQ(move, 0u);
        }
        engine.analyze_mode = 0;
        book_close();
    }
}

TEST_F(Book, PositionsNotFound) {
    struct Row {
        const char* name;
        std::vector<int64_t> offsets; // keys relative to the probed position's key
        std::string tail;
        bool found;
    };
    const Row rows[] = {
        {"key greater than every key", {-3, -2, -1}, "", false},
        {"key smaller than every key", {1, 2, 3}, "", false},
        {"empty file", {}, "", false},
        {"file shorter than one entry", {}, std::string(15, '\x46'), false},
        {"trailing part of an entry is ignored", {-1, 0}, std::string(9, '\x46'), true},
        {"single entry", {0}, "", true},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const uint64_t key = key_of(START);
        std::vector<Entry> entries;
        for (int64_t d : r.offsets)
            entries.push_back({key + static_cast<uint64_t>(d), pg("e2e4"), 3});
        open_book(START, entries, r.tail);
        Move move      = 0;
        const auto out = probe(move);
        EXPECT_EQ(move, r.found ? text_to_move("e2e4") : 0u);
        if (!r.found) {
            EXPECT_EQ(out, "");
        }
        book_close();
    }
}

TEST_F(Book, FilesThatCannotBeOpened) {
    struct Row {
        const char* name;
        std::string file;
    };
    const Row rows[] = {
        {"missing file", testing::TempDir() + "no_such_book_file.bin"},
        {"a directory", testing::TempDir()},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        std::snprintf(engine.book_name, sizeof engine.book_name, "%s", r.file.c_str());
        EXPECT_FALSE(book_open());
        EXPECT_EQ(engine.book_file, nullptr);
        setboard(*game, START);
        Move move = 0;
        EXPECT_EQ(probe(move), "");
        EXPECT_EQ(move, 0u);
    }
}

// More entries than the listing holds: 16 are shown, the choice is made over all 20.
TEST_F(Book, ListingHoldsSixteenEntries) {
    const uint64_t key  = key_of(START);
    const char* moves[] = {"a2a3", "b2b3", "c2c3", "d2d3", "e2e3", "f2f3", "g2g3", "h2h3", "a2a4", "b2b4",
                           "c2c4", "d2d4", "e2e4", "f2f4", "g2g4", "h2h4", "b1a3", "b1c3", "g1f3", "g1h3"};
    std::vector<Entry> entries;
    std::string listing = "{";
    for (const char* m : moves) {
        const uint16_t w = std::strcmp(m, "g1h3") == 0 ? 5 : 1;
        entries.push_back({key, pg(m), w});
        if (entries.size() <= 16) listing += std::string(" ") + m + " 4%";
    }
    open_book(START, entries);
    Move move = 0;
    EXPECT_EQ(probe(move), listing + " }\nPolyglot Best Found : g1h3\n");
    EXPECT_EQ(move, text_to_move("g1h3"));
}

TEST_F(Book, ListingForBk) {
    const uint64_t key = key_of(START);
    char out[512];
    std::strcpy(out, "stale");
    book_listing(*game, out, sizeof out);
    EXPECT_STREQ(out, "") << "no book open";

    open_book(START, {{key, pg("e2e4"), 2}, {key, pg("d2d4"), 1}});
    const uint32_t state = book_rand_state;
    book_listing(*game, out, sizeof out);
    EXPECT_STREQ(out, "{ e2e4 66% d2d4 33% }");
    EXPECT_EQ(book_rand_state, state) << "the listing draws no numbers";

    setboard(*game, CASTLES);
    book_listing(*game, out, sizeof out);
    EXPECT_STREQ(out, "") << "position not in the book";
}

// Reads the games of a PGN file as lists of SAN tokens.
static std::vector<std::vector<std::string>> read_pgn(const std::string& file,
                                                      std::vector<std::string>& results) {
    std::ifstream in(file);
    std::vector<std::vector<std::string>> games(1);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '[') continue;
        std::istringstream words(line);
        std::string w;
        while (words >> w) {
            if (w == "1-0" || w == "0-1" || w == "1/2-1/2" || w == "*") {
                results.push_back(w);
                games.emplace_back();
            } else if (!std::isdigit(static_cast<unsigned char>(w[0]))) {
                games.back().push_back(w);
            }
        }
    }
    games.pop_back();
    return games;
}

// The legal move of the game position that a SAN token names (0 when none or several do).
static Move san_to_move(const Position& p, std::string san) {
    while (!san.empty() && std::strchr("+#!?", san.back()))
        san.pop_back();
    const int home = p.side == WHITE ? E1 : E8;
    if (san == "O-O") return make_move_word(home, home + 2);
    if (san == "O-O-O") return make_move_word(home, home - 2);
    int promo = 0;
    if (san.size() > 2 && san[san.size() - 2] == '=') {
        promo = static_cast<int>(std::string(" NBRQ").find(san.back()));
        san.resize(san.size() - 2);
    }
    int type = PAWN;
    if (std::strchr("NBRQK", san[0])) {
        type = static_cast<int>(std::string("PNBRQK").find(san[0]));
        san.erase(0, 1);
    }
    const int to  = (san[san.size() - 2] - 'a') + 8 * (san[san.size() - 1] - '1');
    int from_file = -1, from_rank = -1;
    for (size_t i = 0; i + 2 < san.size(); ++i) {
        if (san[i] >= 'a' && san[i] <= 'h') from_file = san[i] - 'a';
        if (san[i] >= '1' && san[i] <= '8') from_rank = san[i] - '1';
    }
    Move found = 0;
    int count  = 0;
    for (uint32_t i = 0; i < engine.legal_count; ++i) {
        const Move m = engine.legal_moves.moves[i] & 0xFFFF;
        if (m == 0 || move_to(m) != to || move_promo(m) != promo) continue;
        const int from = move_from(m);
        if (piece_type(p.board[from]) != type) continue;
        if ((from_file >= 0 && file_of(from) != from_file) || (from_rank >= 0 && rank_of(from) != from_rank))
            continue;
        found = m;
        ++count;
    }
    return count == 1 ? found : 0;
}

static std::string find_polyglot() {
    for (const char* p : {"/usr/games/polyglot", "/usr/bin/polyglot", "/usr/local/bin/polyglot"})
        if (std::filesystem::exists(p)) return p;
    return "";
}

// A book written by an independent tool from a few games: every position of those games that the
// tool put in the book is found, and only moves the book holds are played. The tool keeps the
// moves of the side that won or drew, so the loser's positions are out of book.
TEST_F(Book, BookMadeByPolyglot) {
    const std::string tool = find_polyglot();
    if (tool.empty()) GTEST_SKIP() << "polyglot is not installed";
    const std::string pgn = std::string(MORVAINE_SOURCE_DIR) + "/tests/data/book_games.pgn";
    const std::string cmd =
        tool + " make-book -pgn " + pgn + " -bin " + path + " -min-game 1 > /dev/null 2>&1";
    ASSERT_EQ(std::system(cmd.c_str()), 0);

    std::vector<std::string> results;
    const auto games = read_pgn(pgn, results);
    ASSERT_EQ(games.size(), 5u);
    ASSERT_EQ(results.size(), games.size());

    // The moves each position should offer: those of sides that did not lose.
    std::map<uint64_t, std::set<Move>> book_moves;
    int plies = 0;
    for (size_t g = 0; g < games.size(); ++g) {
        setboard(*game, START);
        for (const std::string& san : games[g]) {
            generate_legal_moves(*game, false);
            const Move m = san_to_move(*game->pos, san);
            ASSERT_NE(m, 0u) << "game " << g + 1 << " move " << san;
            const bool lost = results[g] == (game->pos->side == WHITE ? "0-1" : "1-0");
            if (!lost) book_moves[game->key].insert(m);
            commit_move(*game, m);
            ++plies;
        }
    }
    ASSERT_GT(plies, 80);

    for (int pickbest : {1, 0}) {
        ASSERT_TRUE(book_open());
        engine.pickbest  = pickbest;
        engine.bookdepth = 1000;
        int found = 0, out_of_book = 0;
        for (size_t g = 0; g < games.size(); ++g) {
            setboard(*game, START);
            engine.ply = 0;
            for (const std::string& san : games[g]) {
                SCOPED_TRACE("pickbest " + std::to_string(pickbest) + ", game " + std::to_string(g + 1) +
                             ", before " + san);
                Move move = 0;
                probe(move);
                const auto it = book_moves.find(game->key);
                if (it == book_moves.end()) {
                    EXPECT_EQ(move, 0u);
                    ++out_of_book;
                } else {
                    EXPECT_EQ(it->second.count(move), 1u) << move_text(move);
                    ++found;
                }
                generate_legal_moves(*game, false);
                commit_move(*game, san_to_move(*game->pos, san));
                ++engine.ply;
            }
        }
        EXPECT_GT(found, 60);
        EXPECT_GT(out_of_book, 10);
        book_close();
    }
}
