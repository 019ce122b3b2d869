#pragma once
// Move ordering: the staged MovePicker each node keeps on its frame, the killer, counter-move and
// history memory of the thread's record that feeds it, and the static exchange evaluation. The
// picker hands out pseudo-legal moves; the searches test each with legal() before making it.

#include <cstdint>

#include "board/types.h"
#include "search/thread.h"

enum PickStage {
    STAGE_EVASIONS     = 0,
    STAGE_CAPTURES     = 1,
    STAGE_KILLER1      = 2,
    STAGE_KILLER2      = 3,
    STAGE_COUNTER      = 4,
    STAGE_QUIETS       = 5,
    STAGE_BAD_CAPTURES = 6,
    STAGE_END          = 7
};

// History change for a quiet move at a cut-off of depth d (d at most 16).
constexpr int history_bonus(int d) {
    return 32 * d * d;
}

// A counter-move-history row: cmhist[code][square] of the previous move, indexed by the code and
// destination of the quiet move being rated. Null when the node has no previous move.
using CmRow = int16_t (*)[64];

struct MovePicker {
    int stage;
    uint32_t index, count;
    uint32_t deferred_count;
    bool generated;        // the current stage's list has been filled
    bool hash_pending;     // the hash move has yet to be handed out
    bool full_mode;        // main move loops: all stages; otherwise the picker ends after one
    bool checks_first_ply; // quiescence first ply: stage 1 from gen_checks keyed by score_moves
    int underpromotions;
    int ply;
    Move hash_move;
    Move killer1, killer2, counter_move;
    CmRow cm_row;
    Move list[MAX_MOVES];
    // Captures of negative exchange value, value in the key half; as many as a list can hold.
    Move deferred[MAX_MOVES];
};

// The node's counter-move-history row, from the current position's last move.
CmRow cm_row_of(SearchThread& t);

// What picker_init is asked for; the flags combine with |.
enum PickerFlags : unsigned {
    PICK_ONE_STAGE        = 0, // the picker ends after its first stage (captures or evasions)
    PICK_ALL_STAGES       = 1, // main move loops: captures, killers, counter move, quiets, bad captures
    PICK_UNDERPROMOTIONS  = 2, // captures and evasions include the promotions to rook, bishop, knight
    PICK_CHECKS_FIRST_PLY = 4, // quiescence first ply: the first stage comes from gen_checks
};
void picker_init(MovePicker& mp, SearchThread& t, Move hash_move, unsigned flags, int ply);
// Next move (with the quiet mark where it applies), or 0 when the picker has ended. The stage the
// move came from is left in mp.stage; the hash move comes out before any stage has begun.
Move next_move(MovePicker& mp, SearchThread& t);
// Drops what is left of the quiet stage (late-move pruning).
inline void skip_quiets(MovePicker& mp) {
    if (mp.stage == STAGE_QUIETS) mp.index = mp.count;
}

void score_moves(SearchThread& t, Move* list, uint32_t count);
void update_history(SearchThread& t, CmRow cmh, Move m, int bonus);
void store_counter(SearchThread& t, Move m);
void update_killers(SearchThread& t, int ply, Move m);
// A quiet move failed high: killers, counter move and a bonus of 32 * d * d for it; the same
// malus for each quiet move tried before it.
void cutoff_update(SearchThread& t, int ply, CmRow cmh, Move m, const Move* quiets, int quiet_count, int d);
int see(const Position& p, Move m);
