#pragma once
// What the engine needs of the operating system, behind one interface; one file per OS implements
// it and no other file includes an OS header.

#include <cstdint>

int64_t get_ms();       // monotonic milliseconds
bool input_pending();   // bytes waiting on stdin (in our reader's buffer or the pipe), left unread
bool key_waiting();     // console keyboard: a key is waiting (only when stdin is a terminal)
int read_key();         // read one key without echo
void clear_screen();
void sleep_ms(int ms);
// Reads one line of stdin (without its line end) into buf of size n; a longer line is returned in
// pieces. Returns false at end of input.
bool read_line(char* buf, int n);
