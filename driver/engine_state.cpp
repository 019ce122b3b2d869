#include "driver/engine_state.h"

EngineState engine;
