#pragma once
// Move ordering: the staged MovePicker each node keeps on its frame, the history/killer/counter
// updates that feed it, and the static exchange evaluation.

#include <cstdint>

#include "board/types.h"
#include "search/thread.h"

enum PickStage {
    STAGE_EVASIONS = 0,
    STAGE_CAPTURES = 1,
    STAGE_KILLER1 = 2,
    STAGE_KILLER2 = 3,
    STAGE_COUNTER = 4,
    STAGE_QUIETS = 5,
    STAGE_BAD_CAPTURES = 6,
    STAGE_END = 7
};

struct MovePicker {
    int stage;
    uint32_t index, count;
    Move list[MAX_MOVES];
    Move deferred[MAX_MOVES];
    uint32_t deferred_count;
    Move hash_move;
    bool hash_move_tried;
    bool full_mode;
    int underpromotions;
    bool checks_first_ply; // qsearch's first ply: stage 1 from gen_checks keyed by score_moves
    int16_t* cm_row;       // counter-move-history row of the node, or null
    Move killer1, killer2, counter_move;
};

void picker_init(MovePicker& mp, SearchThread& t, Move hash_move, bool full_mode, int underpromotions,
                 bool checks_first_ply, int ply);
// Next move (with quiet mark where it applies), or 0 when the picker has ended. The stage the
// move came from is left in mp.stage.
Move next_move(MovePicker& mp, SearchThread& t, int ply);

void score_moves(SearchThread& t, Move* list, uint32_t count);
void update_history(SearchThread& t, int16_t* cmh, Move m, int bonus);
void store_counter(SearchThread& t, Move m);
int see(const Position& p, Move m);
