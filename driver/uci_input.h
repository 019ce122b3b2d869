#pragma once
// UCI input: while the UCI dialect runs, a thread of its own reads standard input line by line
// into a queue. The command loop takes the lines in order; a running search takes out the few
// commands it answers at once (stop, ponderhit, isready, quit) and leaves the rest waiting. No one
// ever waits for the end of a line while a search needs its clock watched.

#include <string>

// A UCI line buffer: at most 32,756 characters of a line, its line end and the terminator; a
// longer line arrives in pieces.
constexpr int UCI_LINE_SIZE = 32758;

// Starts the reader (once). From then on no other code reads standard input.
void uci_input_start();
// The next line in arrival order, waiting for one; false once the input has ended and every line
// has been taken.
bool uci_input_next(std::string& line);
// Whether the input has ended with no line beginning with the barrier word still queued (other
// lines may be).
bool uci_input_ended(const char* barrier);
// Takes out the first waiting line that begins with one of the words, leaving the others in their
// order; false when there is none before the first line that begins with the barrier word (or no
// reader runs).
bool uci_input_take(const char* const* words, int count, const char* barrier, std::string& line);
