#pragma once
// Progress lines: the UCI "info" line and the XBoard thinking line, built from what thread 0
// published (best depth, score, principal variation) and the summed node counters.

#include <cstdint>

uint64_t total_nodes();
// Endgame-table probes of the search: the root's and every thread's.
uint64_t total_tbhits();
void print_info();
void print_thinking();
