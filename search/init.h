#pragma once
// The process-wide tables that are computed rather than written out, filled once, layer by layer,
// before any position exists or any thread runs. Start-up, the benchmarks, the fuzz targets and
// the tests all begin here, so they cannot disagree about what is ready.

void tables_init();
