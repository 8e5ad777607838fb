#include <chrono>
#include <ratio>

#include "scenario/readers.h"

namespace orb::sim {
namespace {

using namespace std::chrono_literals;

constexpr Word<TimingMode> kTimingModes[] = {{"dynamic", TimingMode::Dynamic},
                                             {"survey", TimingMode::AutoSurvey},
                                             {"static", TimingMode::Static}};
constexpr Word<std::uint8_t> kTimeReferences[] = {{"gnss", 0}, {"utc", 1}};
constexpr Word<std::uint8_t> kPulseConditions[] = {
    {"always", 0}, {"with-a-fix", 1}, {"with-a-satellite", 2}};

void readPulses(TableReader& receiver, Settings& settings) {
  using Microseconds = std::chrono::duration<std::uint32_t, std::micro>;
  using CableDelay = std::chrono::duration<std::int32_t, std::ratio<1, 100'000'000'000>>;
  Microseconds width{settings.ppsPulseWidth};
  receiver.duration("pps-pulse-width", width, 1us, 100ms);
  settings.ppsPulseWidth = width.count();
  CableDelay delay{settings.cableDelay};
  receiver.duration("cable-delay", delay, -5us, 5us);
  settings.cableDelay = delay.count();
  receiver.word("pps", settings.ppsOutput.mode, kPulseConditions);
  receiver.word("time-reference", settings.ppsOutput.alignSource, kTimeReferences);
  receiver.integer("pps2-frequency", settings.pps2Frequency, 0, 19'200'000);
}

void readTiming(TableReader& receiver, State& state) {
  receiver.table("timing", [&](TableReader& table) {
    using Seconds = std::chrono::duration<std::uint32_t>;
    Timing& timing = state.timing;
    table.word("mode", timing.mode, kTimingModes);
    Seconds length{timing.surveyLength};
    table.duration("survey-length", length, 1s, 14 * 24h);
    timing.surveyLength = length.count();
    table.duration("surveyed", state.surveyed, 0s, length);
    table.integer("standard-deviation", timing.standardDeviation, 0);
    table.number("latitude", timing.latitude, -90, 90);
    table.number("longitude", timing.longitude, -180, 180);
    double altitude = timing.altitude;
    table.number("altitude", altitude, -1000, 10'000);
    timing.altitude = static_cast<float>(altitude);
  });
}

}  // namespace

void readPulsesAndTiming(TableReader& receiver, State& state) {
  readPulses(receiver, state);
  readTiming(receiver, state);
}

}  // namespace orb::sim
