#pragma once
// The input watcher thread: every 4 ms, in XBoard mode, raises input_ready when stdin holds
// unread bytes. It never reads.

void start_input_watcher();
void join_input_watcher();
