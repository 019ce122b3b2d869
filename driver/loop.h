#pragma once
// Start-up in its fixed order, the settings file, new game, the command loop and the exit paths.

#include "search/thread.h"

void startup();
[[noreturn]] void command_loop();
// Runs every line of "mo.ini" through the interpreter as if typed.
void read_settings_file();
// The start position, the settings file and fresh legal moves.
void start_new_game(SearchThread& game);
// Ends the program silently with status 0 after the input watcher has ended.
[[noreturn]] void quit_path();
// "found exit EXIT_FAILURE" and status 0; safe to call while search threads run.
[[noreturn]] void end_of_input();
