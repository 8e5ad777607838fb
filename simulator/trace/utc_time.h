#pragma once

#include <optional>
#include <string>

#include "orb-sim/trace.h"

namespace orb::sim {

WallTime wallTimeNow();

/// As in 2026-11-21T08:20:00.123456Z.
std::string utcText(WallTime time);

/// The time that such a text tells, with as many decimals as there are; nothing where it tells
/// none.
std::optional<WallTime> parseUtc(const std::string& text);

}  // namespace orb::sim
