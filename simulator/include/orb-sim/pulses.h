#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "orb-sim/state.h"

namespace orb::sim {

/// What happens at a timing output.
struct PulseEvent {
  /// What happens.
  enum class Kind : std::uint8_t {
    Rising,     ///< a pulse of the 1PPS output begins
    Falling,    ///< it ends
    Frequency,  ///< the frequency of the second output is now this one
  };
  /// A moment in UTC.
  using Time = std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds>;

  Kind kind = Kind::Rising;     ///< what happens
  Time utc;                     ///< by the receiver's clock
  bool inLeapSecond = false;    ///< it is 23:59:60, and `utc` in the first second of the next day
  std::uint32_t frequency = 0;  ///< Hz
};

/// Must not call the receiver.
using PulseListener = std::function<void(const PulseEvent& event)>;

/// The edges of the 1PPS pulse of the next second that begins on the receiver's clock: two, or none
/// where its mode holds the pulses back now, or where the width is none or lasts to the next pulse.
/// A pulse that the cable delay moves forward begins before its second.
std::vector<PulseEvent> pulseEdges(const State& state);

/// The frequency of the second output, at the time that the receiver's clock shows.
PulseEvent frequencyEvent(const State& state);

/// A line such as "2024-02-08T00:00:59.999999993Z pps rising", without its end.
std::string textOf(const PulseEvent& event);

}  // namespace orb::sim
