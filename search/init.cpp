#include "search/init.h"

#include "board/attacks.h"
#include "board/keys.h"
#include "board/material.h"
#include "eval/tables.h"
#include "search/search.h"

void tables_init() {
    attack_init();
    keys_init();
    pst_tables_init();
    pawn_masks_init();
    adjacent_files_init();
    lmr_init();
}
