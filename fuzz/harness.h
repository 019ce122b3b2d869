#pragma once
// Shared by the fuzz targets: start-up (libFuzzer's initialisation hook, defined here for every
// target) without the banner, the input watcher or a big table, a reset to a fresh engine between
// inputs, the engine's own line splitting, and the guards that keep one input short (small
// tables, few threads, shallow searches) without touching the engine.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// The table size every run starts with; "hash" requests above it are lowered.
inline constexpr int HARNESS_HASH_MB = 2;
// The deepest search a run may start outside analysis (analysis ends when a line arrives).
inline constexpr int HARNESS_DEPTH = 3;

// Back to the engine just after start-up: every driver record as start-up leaves it, one
// fresh search thread, the small table, the start position with its legal moves, no input.
void harness_reset();
// The lines the engine's reader makes of these bytes: ended by a newline or a carriage return (a
// carriage return and newline together end one line).
std::vector<std::string> split_lines(const uint8_t* data, size_t size);
// The text up to the first NUL, which is all a C string of these bytes shows.
std::string c_text(const uint8_t* data, size_t size);
// Aborts the run as a finding: the input made the engine break one of its promises.
[[noreturn]] void finding(const char* what);
