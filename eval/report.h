#pragma once
// The "eval" console report of the game position; recomputes mg and eg from scratch first.

#include "board/types.h"

void eval_report(Position& p);
