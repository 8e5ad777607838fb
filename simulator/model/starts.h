#pragma once

#include <cstdint>

#include "orb-sim/state.h"

namespace orb::sim {

/// What the receiver still knows when it starts: all; where it is and what time it is, but not
/// where the satellites are; nothing.
enum class Start : std::uint8_t { Hot, Warm, Cold };

/// Starts the receiver anew, with the settings that it has saved.
void startAnew(State& state, const Settings& saved, Start start);

/// Lets a start that is under way go on for a while.
void continueStart(State& state, std::chrono::milliseconds elapsed);

}  // namespace orb::sim
