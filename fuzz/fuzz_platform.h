#pragma once
// The platform the in-process fuzz harnesses link in place of the real one. Standard input is a
// queue of lines the harness fills; a GUI modelled on it keeps its lines back while the engine
// thinks for a move and sends the next one during an XBoard analysis, and a console user presses
// a key during a console analysis. Nothing here reads the real standard input or sleeps long.

#include <string>
#include <vector>

// Replaces what is waiting on the engine's "standard input".
void fuzz_input_set(std::vector<std::string> lines);
// The next line (or the next piece of a line longer than n - 1 bytes) into buf of size n; false
// when nothing is left.
bool fuzz_input_take(char* buf, int n);
// Lines and pieces still waiting.
size_t fuzz_input_left();
