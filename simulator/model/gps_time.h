#pragma once

#include <chrono>

#include "orb-sim/state.h"

namespace orb::sim {

using UtcTime = std::chrono::sys_time<std::chrono::milliseconds>;

/// Where GPS time began, 1980-01-06.
constexpr std::chrono::sys_days kGpsEpoch = std::chrono::year{1980} / 1 / 6;

UtcTime utcOf(const GpsTime& time);

/// Sets week and time of week; the leap seconds stay.
void setUtc(GpsTime& time, UtcTime utc);

}  // namespace orb::sim
