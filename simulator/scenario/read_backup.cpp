#include <algorithm>
#include <cstdint>

#include "scenario/readers.h"

// What `orbctl backup` writes of a receiver, as the settings that a simulated one starts with.

namespace orb::sim {

using namespace std::chrono_literals;

namespace {

constexpr Word<FixNavMask> kFixPairs[] = {
    {"2d", {1, 1}}, {"3d", {0, 0}}, {"2d-3d", {1, 0}}, {"3d-2d", {0, 1}}};
constexpr Word<DopMask> kDopMasks[] = {{"default", {1, {250, 250, 250}}}};
constexpr Word<std::uint8_t> kPowerWords[] = {{"normal", 0}, {"powersave", 1}};
constexpr Word<TimingMode> kSurveyModes[] = {{"dynamic", TimingMode::Dynamic},
                                             {"auto", TimingMode::AutoSurvey},
                                             {"static", TimingMode::Static}};

void readMasks(TableReader& table, Settings& settings) {
  table.integer("cnr-limit", settings.elevationCnrMask.cnr, 0, 40);
  table.integer("elevation-limit", settings.elevationCnrMask.elevation, 3, 85);
  table.word("fix-mode", settings.fixNavMask, kFixPairs);
  table.word("dop-mask", settings.dopMask, kDopMasks);
}

void readTimingOutputs(TableReader& table, Settings& settings) {
  constexpr std::int32_t kUnitsPerNanosecond = 100;
  if (std::int32_t delay = 0; table.integer("antenna-delay", delay, -5000, 5000)) {
    settings.cableDelay = delay * kUnitsPerNanosecond;
  }
  table.integer("pps-mode", settings.ppsOutput.mode, 0);
  table.integer("pulse-width", settings.ppsPulseWidth, 1, 100'000);
  table.integer("frequency-output", settings.pps2Frequency, 0, 19'200'000);
}

void readRates(TableReader& table, Settings& settings) {
  constexpr std::size_t kExtendedSentences = 7;
  table.word("power-mode", settings.powerMode, kPowerWords);
  table.integer("update-rate", settings.updateRate, 0);
  if (std::uint8_t interval = 0; table.integer("nmea-interval", interval, 0)) {
    std::fill_n(settings.nmeaIntervals.begin(), kExtendedSentences, interval);
  }
}

}  // namespace

void readBackup(TableReader& file, State& state) {
  Settings& settings = state;
  file.table("settings", [&](TableReader& table) {
    readSharedSettings(table, settings);
    readMasks(table, settings);
    readTimingOutputs(table, settings);
    readRates(table, settings);
  });
  file.table("survey", [&](TableReader& table) {
    Timing& timing = settings.timing;
    double altitude = timing.altitude;
    table.word("mode", timing.mode, kSurveyModes);
    table.integer("length", timing.surveyLength, 0);
    table.number("latitude", timing.latitude, -90, 90);
    table.number("longitude", timing.longitude, -180, 180);
    table.number("altitude", altitude, -1e6, 1e6);
    timing.altitude = static_cast<float>(altitude);
    state.surveyed = 0s;
  });
}

}  // namespace orb::sim
