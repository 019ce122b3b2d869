#pragma once
// Start-up in its fixed order, the settings file, new game and the command loop.

#include "driver/game.h"
#include "search/thread.h"

void startup();
[[noreturn]] void command_loop();
// Steps 2 and 3 of a cycle, before the prompt: a pending ping is answered and a ponder search may
// run. Returns the last result code as the ponder check leaves it.
int before_prompt(SearchThread& game, int last);
// Steps 8 and 9 of a cycle for the line in input_line: the interpreter, then the loop's own words,
// a received move or the engine's move. `last` takes the interpreter's result code. Returns what
// the loop does next; LoopStep::quit when the program is to end.
LoopStep dispatch_line(SearchThread& game, int& last);
// Runs every line of "mo.ini" through the interpreter as if typed.
void read_settings_file();
// The start position, the settings file and fresh legal moves.
void start_new_game(SearchThread& game);
