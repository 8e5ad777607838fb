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

/// Moves the time on, or back, and adds the leap second where it has passed that.
void advance(GpsTime& time, std::chrono::milliseconds elapsed);

/// Until the next second begins.
std::chrono::milliseconds untilSecondOf(const GpsTime& time);

std::chrono::milliseconds between(const GpsTime& from, const GpsTime& to);

/// Whether it is 23:59:60. utcOf() then counts the first second of the next day.
bool isInLeapSecond(const GpsTime& time);

}  // namespace orb::sim
