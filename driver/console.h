#pragma once
// The console and diagnostic words of the interpreter (help, board display and transformation,
// move and game lists, perft, hashing statistics, pondering switches, trace settings). Each takes
// the game record, reads the interpreter's tokens and returns a CMD_* result code.

#include "search/thread.h"

int cmd_beep(SearchThread& game);
int cmd_bench(SearchThread& game);
int cmd_bk(SearchThread& game);
int cmd_bogus(SearchThread& game);
int cmd_cls(SearchThread& game);
int cmd_display(SearchThread& game);
int cmd_d(SearchThread& game);
int cmd_eval(SearchThread& game);
int cmd_flip(SearchThread& game);
int cmd_flop(SearchThread& game);
int cmd_help(SearchThread& game);
int cmd_list(SearchThread& game);
int cmd_list_game(SearchThread& game);
int cmd_dhash(SearchThread& game);
int cmd_perft(SearchThread& game);
int cmd_ponder(SearchThread& game);
int cmd_savepos(SearchThread& game);
int cmd_trace(SearchThread& game);
int cmd_xtrace(SearchThread& game);
