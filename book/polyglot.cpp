#include "book/polyglot.h"

#include <cstdio>
#include <cstring>

#include "board/keys.h"
#include "board/notation.h"

uint32_t book_rand_state = 1;

constexpr long ENTRY_SIZE       = 16;
constexpr int LISTING_SIZE      = BOOK_LISTED;
constexpr uint16_t NO_BOOK_MOVE = 0;

struct BookEntry {
    uint64_t key;
    uint16_t move;
    uint16_t weight;
};

// What one scan of a position's entries found: the first entries for the listing, the weight
// total over all of them and the entry the chosen rule settled on.
struct BookScan {
    uint16_t moves[LISTING_SIZE];
    uint16_t weights[LISTING_SIZE];
    int held;
    uint64_t total;
    uint16_t chosen;
};

// The generator gives 15-bit numbers: 0 to BOOK_RAND_RANGE - 1.
constexpr uint64_t BOOK_RAND_RANGE = 0x8000;

static int book_rand() {
    book_rand_state = book_rand_state * 214013u + 2531011u;
    return static_cast<int>((book_rand_state >> 16) & 0x7FFF);
}

static uint64_t big_endian(const unsigned char* b, int n) {
    uint64_t v = 0;
    for (int i = 0; i < n; ++i)
        v = v << 8 | b[i];
    return v;
}

// An entry that cannot be read matches no key and ends the scan.
static bool read_entry(FILE* f, long index, BookEntry& e) {
    unsigned char b[ENTRY_SIZE];
    if (std::fseek(f, index * ENTRY_SIZE, SEEK_SET) != 0 || std::fread(b, 1, ENTRY_SIZE, f) != ENTRY_SIZE)
        return false;
    e.key    = big_endian(b, 8);
    e.move   = static_cast<uint16_t>(big_endian(b + 8, 2));
    e.weight = static_cast<uint16_t>(big_endian(b + 10, 2));
    return true;
}

static bool read_key(FILE* f, long index, uint64_t& key) {
    unsigned char b[8];
    if (std::fseek(f, index * ENTRY_SIZE, SEEK_SET) != 0 || std::fread(b, 1, 8, f) != 8) return false;
    key = big_endian(b, 8);
    return true;
}

static long entry_count(FILE* f) {
    const long here = std::ftell(f);
    std::fseek(f, 0, SEEK_END);
    const long size = std::ftell(f);
    std::fseek(f, here, SEEK_SET);
    return size < 0 ? 0 : size / ENTRY_SIZE;
}

// Index of the first entry whose key is not below key; an unreadable key counts as the largest.
static long lower_bound(FILE* f, long n, uint64_t key) {
    long lo = 0, hi = n;
    while (lo < hi) {
        const long mid = (lo + hi) / 2;
        uint64_t k     = 0;
        if (!read_key(f, mid, k) || key <= k)
            hi = mid;
        else
            lo = mid + 1;
    }
    return lo;
}

// Reads every entry of the position. With `draw` set, each entry takes one number from the
// generator and the choice follows the best rule (use_best) or the random rule.
static void scan_position(FILE* f, uint64_t key, bool draw, bool use_best, BookScan& s) {
    s.held       = 0;
    s.total      = 0;
    s.chosen     = NO_BOOK_MOVE;
    const long n = entry_count(f);
    uint16_t max = 0;
    BookEntry e{};
    for (long i = lower_bound(f, n, key), count = 0; i < n && read_entry(f, i, e) && e.key == key;
         ++i, ++count) {
        if (s.held < LISTING_SIZE) {
            s.moves[s.held]   = e.move;
            s.weights[s.held] = e.weight;
            ++s.held;
        }
        if (e.weight > max) max = e.weight;
        s.total += e.weight;
        if (!draw) continue;
        const int r = book_rand();
        if (use_best) {
            // Ties go to the later entry.
            if (e.weight == max) s.chosen = e.move;
        } else if (count == 0) {
            s.chosen = e.move;
        } else if (static_cast<uint64_t>(r) * s.total < static_cast<uint64_t>(e.weight) * BOOK_RAND_RANGE) {
            // Taking each entry in turn with the chance of its weight in the total so far leaves
            // every entry chosen in proportion to its weight.
            s.chosen = e.move;
        }
    }
}

// Book squares number like the board's (file + 8 * rank). Castling is stored as the king taking
// its own rook and becomes the two-file king move when that king stands on its home square, except
// in positions that write castling in the book's own form (Chess960).
static Move translate(const Position& p, uint16_t pg) {
    const int from = (pg >> 6) & 63;
    int to         = pg & 63;
    if (p.chess960) return make_move_word(from, to);
    if (from == E1 && p.wking == E1) {
        if (to == H1) to = G1;
        if (to == A1) to = C1;
    } else if (from == E8 && p.bking == E8) {
        if (to == H8) to = G8;
        if (to == A8) to = C8;
    }
    return make_move_word(from, to);
}

// "{ e2e4 66% d2d4 33% }": the held entries with their share of the total weight.
static void format_listing(const Position& p, const BookScan& s, char* out, int size) {
    int used = std::snprintf(out, static_cast<size_t>(size), "{");
    for (int i = 0; i < s.held && used >= 0 && used < size; ++i) {
        const int share = s.total ? static_cast<int>(s.weights[i] * 100ULL / s.total) : 0;
        used += std::snprintf(out + used, static_cast<size_t>(size - used), " %s %d%%",
                              move_text(translate(p, s.moves[i])), share);
    }
    if (used >= 0 && used < size) std::snprintf(out + used, static_cast<size_t>(size - used), " }");
}

FILE* book_file_open(const char* name) {
    // Read only: a book the user may not write (one a package installed) still opens. Some systems
    // open a folder for reading too; its first read fails, and it is no book.
    FILE* f = std::fopen(name, "rb");
    if (f && (std::fgetc(f), std::ferror(f))) {
        std::fclose(f);
        f = nullptr;
    }
    if (f) std::rewind(f);
    return f;
}

Move book_choose(FILE* f, const Position& p, bool use_best, char* listing, int size) {
    Position copy = p; // the key is computed on a position of its own
    BookScan s;
    scan_position(f, full_key(copy), true, use_best, s);
    if (s.chosen == NO_BOOK_MOVE) return 0;
    if (listing) format_listing(p, s, listing, size);
    return translate(p, s.chosen);
}

void book_listing(FILE* f, const Position& p, char* out, int size) {
    if (size <= 0) return;
    out[0]        = '\0';
    Position copy = p;
    BookScan s;
    scan_position(f, full_key(copy), false, false, s);
    if (s.held > 0) format_listing(p, s, out, size);
}
