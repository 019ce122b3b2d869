#pragma once
// The processor check made first thing in main, before any table is built: a build that uses the
// POPCNT instruction ends with one line on a processor without it, instead of dying on an illegal
// instruction somewhere later. cpu.cpp is compiled for the plain x86-64 instruction set, so that
// the check itself runs on any 64-bit processor.

void require_cpu_features();
