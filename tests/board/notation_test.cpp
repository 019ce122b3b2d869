#include "board/notation.h"

#include <gtest/gtest.h>
#include <string>

TEST(Notation, MoveText) {
    struct Row {
        const char* name;
        Move move;
        const char* want;
    };
    const Row rows[] = {
        {"knight promotion", 11580, "e7e8n"},
        {"castling", 262, "e1g1"},
        {"no move", 0, "(none)"},
        {"sort key only", 0xFFF40000u, "(none)"},
        {"quiet mark and sort key only", 0x12341000u, "(none)"},
        {"generated queen promotion", 0xFFF48000u | (52 * 64 + 60), "e7e8q"},
        {"generated rook promotion", 0xFFF36000u | (9 * 64 + 1), "b2b1r"},
        {"generated bishop promotion", 0xFFF24000u | (55 * 64 + 62), "h7g8b"},
        {"quiet mark is not text", QUIET_MARK | (6 * 64 + 21), "g1f3"},
        {"a1 origin", 0 * 64 + 8, "a1a2"},
        {"h8 to a1", 63 * 64 + 0, "h8a1"},
        {"unused promotion type", (7u << 13) | (12 * 64 + 28), "e2e4"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_STREQ(move_text(r.move), r.want);
    }
}

TEST(Notation, TextToMove) {
    struct Row {
        const char* name;
        const char* text;
        Move want;
    };
    const Row rows[] = {
        {"e2e4", "e2e4", 796},
        {"queen promotion", "a7a8q", 35896},
        {"upper case is no promotion letter", "a7a8Q", 3128},
        {"knight", "e7e8n", 11580},
        {"rook", "b2b1r", (3u << 13) | (9 * 64 + 1)},
        {"bishop", "h7g8b", (2u << 13) | (55 * 64 + 62)},
        {"letter in range naming no piece", "e7e8k", 52 * 64 + 60},
        {"letter past r", "e7e8s", 52 * 64 + 60},
        {"followed by a space", "e2e4 ", 796},
        {"rest of the line ignored", "g1f3 and more", 6 * 64 + 21},
        {"castling", "e8c8", 3898},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(text_to_move(r.text), r.want);
    }
}

// Every well-formed lower-case text survives the trip through the move word.
TEST(Notation, RoundTrip) {
    const char* promotions[] = {"", "n", "b", "r", "q"};
    int failures             = 0;
    for (int from = 0; from < 64; ++from)
        for (int to = 0; to < 64; ++to)
            for (const char* p : promotions) {
                if (from == 0 && to == 0) continue; // "a1a1" is the no-move word
                const std::string t = std::string{char('a' + from % 8), char('1' + from / 8),
                                                  char('a' + to % 8), char('1' + to / 8)} +
                                      p;
                if (move_text(text_to_move(t.c_str())) != t) ++failures;
            }
    EXPECT_EQ(failures, 0);
}

// Short or empty text yields some word without reading past the end of the text.
TEST(Notation, ShortTextIsHarmless) {
    const char* texts[] = {"", "e", "e2", "e2e"};
    for (const char* t : texts) {
        SCOPED_TRACE(t);
        EXPECT_LE(text_to_move(t), 0xFFFFu);
    }
}
