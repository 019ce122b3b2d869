#include "driver/book.h"

#include <cstdio>

#include "board/keys.h"
#include "board/makemove.h"
#include "board/notation.h"
#include "book/polyglot.h"
#include "driver/engine_state.h"
#include "driver/game_position.h"

bool book_open() {
    book_settings.file = book_file_open(book_settings.name);
    return book_settings.file != nullptr;
}

void book_close() {
    if (book_settings.file && std::fclose(book_settings.file) != 0 && !protocol.xboard_mode.load())
        std::printf("book_close(): fclose()\n");
    book_settings.file = nullptr;
}

Move book_probe(SearchThread& game) {
    if (!book_settings.mode || !book_settings.file) return 0;
    // A book holds standard chess: of Chess960 games only one that began at the standard start
    // (where the game position's key history begins) is in it.
    if (protocol.chess960 && game.keyhist[0] != START_KEY) return 0;
    generate_legal_moves(game, false);
    const bool use_best = game_history.ply >= book_settings.random && book_settings.pickbest;
    const bool console  = !protocol.xboard_mode.load();
    char listing[BOOK_LISTING_SIZE];
    const Move move =
        book_choose(book_settings.file, *game.pos, use_best, console ? listing : nullptr, sizeof listing);
    if (move == 0) return 0;
    if (console) {
        std::printf("%s\n", listing);
        std::fflush(stdout);
        std::printf("Polyglot %s Found : %s\n", use_best ? "Best" : "Random", move_text(move));
    }

    if (game_history.ply > book_settings.depth && !protocol.analyze_mode) {
        std::printf("End of Polglot Book\n");
        book_close();
        book_settings.mode = 0;
        return 0;
    }

    // The move must come back from its own text as one of the game position's legal moves.
    char text[8];
    std::snprintf(text, sizeof text, "%s", move_text(move));
    const Move read_back = text_to_move(text);
    const Move m         = find_legal_move(read_back);
    if (m != 0 && legal(*game.pos, m)) return move;
    std::printf("Illegal move: %s\n", text);
    std::printf("Illegal:book move ");
    std::printf(" buffer=%s mv %s\n", text, move_text(read_back));
    return 0;
}

void book_listing(SearchThread& game, char* out, int size) {
    if (size <= 0) return;
    out[0] = '\0';
    if (book_settings.file) book_listing(book_settings.file, *game.pos, out, size);
}

void print_book_listing(SearchThread& game) {
    static char listing[4096];
    book_listing(game, listing, sizeof listing);
    std::printf("\t%s\n\n", listing);
    std::fflush(stdout);
}
