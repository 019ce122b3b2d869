#pragma once
// The input watcher thread: every 4 ms, in XBoard mode, raises input_ready when stdin holds
// unread bytes. It never reads.

void start_input_watcher();
// Waits for the watcher to end; the caller first sets watcher_quit (or uci_mode). Safe to call
// when no watcher runs.
void join_input_watcher();
