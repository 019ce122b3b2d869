#pragma once
// Search control: turns the clock inputs into limits, runs the threads, polls time and input every
// 2 ms, and prints the move. Every search goes through think().

#include <cstdint>

#include "search/thread.h"

void think(SearchThread& game);
