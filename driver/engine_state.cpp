#include "driver/engine_state.h"

#include <memory>

ProtocolFlags protocol;
GameHistory game_history;
ClockInputs clock_inputs;
BookSettings book_settings;
SearchThread* game_record = nullptr;
char input_line[INPUT_SIZE];

void ClockInputs::clear_request() {
    const ClockRecord kept_record = measured;
    const int32_t kept_level      = level_moves;
    *this                         = ClockInputs{};
    measured                      = kept_record;
    level_moves                   = kept_level;
}

// The atomics of the protocol flags cannot be assigned: the record is made anew in place.
template <typename T> static void remake(T& record) {
    std::destroy_at(&record);
    std::construct_at(&record);
}

void reset_engine_state() {
    remake(protocol);
    remake(game_history);
    remake(clock_inputs);
    remake(book_settings);
    input_line[0] = '\0';
}
