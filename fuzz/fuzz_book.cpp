// book_probe and the "bk" listing on arbitrary book files. The first byte picks the settings
// (pickbest, the random rule's move number, book depth, dialect, analysis); the rest is the file.
// Each run probes a few positions; a run fails when a probe yields a move that is not legal in the
// position it was asked about.

#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>

#include "board/fen.h"
#include "board/makemove.h"
#include "driver/book.h"
#include "driver/engine_state.h"
#include "driver/game_position.h"
#include "fuzz/harness.h"

namespace {

// The file each input is written to, one per fuzzing process.
const std::string& book_path() {
    static const std::string path = "/tmp/morvaine-fuzz-book-" + std::to_string(getpid()) + ".bin";
    return path;
}

constexpr const char* POSITIONS[] = {
    START_FEN,
    "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq -",
    "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -",
    "r3k2r/8/8/8/8/8/8/R3K2R b KQkq -",
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    harness_reset();
    const uint8_t settings = data[0];
    std::FILE* f           = std::fopen(book_path().c_str(), "wb");
    if (!f) return 0;
    std::fwrite(data + 1, 1, size - 1, f);
    std::fclose(f);

    std::snprintf(book_settings.name, sizeof book_settings.name, "%s", book_path().c_str());
    book_settings.pickbest = settings & 1;
    book_settings.random   = (settings >> 1) & 3;
    book_settings.depth    = (settings >> 3) & 3;
    protocol.xboard_mode   = (settings >> 5) & 1;
    protocol.analyze_mode  = (settings >> 6) & 1;
    game_history.ply       = (settings >> 7) & 1;
    if (!book_open()) return 0;
    book_settings.mode = 1;

    SearchThread& game = *game_record;
    char listing[4096];
    for (const char* fen : POSITIONS) {
        setboard(game, fen);
        new_game(game);
        generate_legal_moves(game, true);
        book_listing(game, listing, sizeof listing);
        if (!book_settings.file) break;
        const Move m = book_probe(game);
        if (m != 0 && find_legal_move(m) == 0) finding("the book yielded an illegal move");
        if (!book_settings.file) break;
    }
    book_close();
    return 0;
}
