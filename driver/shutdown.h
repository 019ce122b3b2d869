#pragma once
// The ways out of the program.

// Ends the program silently with status 0 after the input watcher has ended.
[[noreturn]] void quit_path();
// "found exit EXIT_FAILURE" and status 0; safe to call while search threads run.
[[noreturn]] void end_of_input();
