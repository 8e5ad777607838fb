#include "orb-sim/pulses.h"

#include <cmath>
#include <optional>

#include "model/gps_time.h"
#include "model/nmea_format.h"

namespace orb::sim {
namespace {

using std::chrono::microseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;

std::string timeText(const PulseEvent& event) {
  const seconds leap{event.inLeapSecond ? 1 : 0};
  const PulseEvent::Time time = event.utc - leap;  // of its minute
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss<nanoseconds> clock(time - day);
  return format("%04d-%02u-%02uT%02d:%02d:%02d.%09dZ", static_cast<int>(date.year()),
                static_cast<unsigned int>(date.month()), static_cast<unsigned int>(date.day()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>((clock.seconds() + leap).count()),
                static_cast<int>(clock.subseconds().count()));
}

/// An event `later` than a time of the receiver's clock, which a leap second may just have passed.
PulseEvent eventAt(PulseEvent::Kind kind, const GpsTime& time, nanoseconds later) {
  const PulseEvent::Time utc = utcOf(time) + later;
  if (!time.leapSecond || utc < *time.leapSecond) {
    return {kind, utc};
  }
  constexpr seconds kLeap{1};
  const bool isInLeapSecond = utc < *time.leapSecond + kLeap;
  return {kind, isInLeapSecond ? utc : utc - kLeap, isInLeapSecond};
}

}  // namespace

std::vector<PulseEvent> pulseEdges(const State& state) {
  using Kind = PulseEvent::Kind;
  const std::optional<Pulses> pulses = state.pulses();
  if (!pulses || pulses->width == 0 || microseconds{pulses->width} >= seconds{1}) {
    return {};
  }
  GpsTime second = state.time;
  advance(second, untilSecondOf(second));
  GpsTime secondBefore = second;  // before it, there may be a leap second less
  secondBefore.leapSeconds = state.time.leapSeconds;
  secondBefore.leapSecond = state.time.leapSecond;
  const auto edge = [&](Kind kind, nanoseconds later) {
    return eventAt(kind, later < nanoseconds{0} ? secondBefore : second, later);
  };
  const auto fromGps = static_cast<std::int64_t>(std::llround(pulses->offset));
  const nanoseconds rising = nanoseconds{fromGps} - nanoseconds{state.utcOffset};
  return {edge(Kind::Rising, rising), edge(Kind::Falling, rising + microseconds{pulses->width})};
}

PulseEvent frequencyEvent(const State& state) {
  PulseEvent event =
      eventAt(PulseEvent::Kind::Frequency, state.time, -nanoseconds{state.utcOffset});
  event.frequency = state.pps2Frequency;
  return event;
}

std::string textOf(const PulseEvent& event) {
  switch (event.kind) {
    case PulseEvent::Kind::Rising:
      return timeText(event) + " pps rising";
    case PulseEvent::Kind::Falling:
      return timeText(event) + " pps falling";
    default:
      return timeText(event) + " pps2 " + std::to_string(event.frequency) + " Hz";
  }
}

}  // namespace orb::sim
