#pragma once
// The process-wide tables too large to compute at compile time (the sliders' magic lookups),
// filled once before any position exists or any thread runs. Start-up, the benchmarks, the fuzz
// targets and the tests all begin here, so they cannot disagree about what is ready.

void tables_init();
