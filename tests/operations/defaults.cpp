#include "operations/operation.h"

namespace orb::test {

namespace {

void applyConfiguration(sim::State& state) {
  state.cableDelay = 2800;
  state.constellations = 0x0F;
  state.sbas = {0, 1, 8, 1, 3, 7};
  state.qzss = {0, 3};
  state.elevationCnrMask = {1, 10, 0};
  state.navigationMode = 1;
  state.fixNavMask = {0, 0};
  state.timing.mode = sim::TimingMode::AutoSurvey;
  state.timing.surveyLength = 10800;
}

Drawn drawConfiguration(Numbers& /*numbers*/) {
  return {calling(&Driver::setDefaultConfiguration), 0, applyConfiguration};
}

Drawn drawApplication(Numbers& /*numbers*/) {
  return {calling(&Driver::setApplicationDefaults), 0, [](auto& state) {
            state.sbas = {0, 1, 8, 1, 3, 7};
            state.navigationMode = 0;
            state.fixNavMask = {0, 1};
            state.outputType = sim::OutputType::Nmea;
          }};
}

Drawn drawFactory(Numbers& /*numbers*/) {
  return {calling(&Driver::resetFactoryDefaults), 0, [](auto& state) {
            static_cast<sim::Settings&>(state) = {};
            applyConfiguration(state);
            state.nmeaIntervals.fill(0);
          }};
}

// Returns 0 whatever becomes of it.
Drawn drawPolling(Numbers& numbers) {
  const std::uint8_t interval = numbers.byte();
  return {calling(&Driver::configureNmeaPolling, interval), 0, [=](auto& state) {
            state.nmeaIntervals = {interval, interval, interval, interval,
                                   interval, interval, interval};
          }};
}

// The output type, the survey's length and the NMEA intervals are set and not read back.
std::string notAll(const sim::State& /*state*/) { return ""; }

}  // namespace

// A name, the messages that it awaits, how it is drawn, and what it reads back.
Family defaults() {
  return {
      .composites = {
          {"SetDefaultConfiguration",
           {0xBB00, 0x648C, 0x6280, 0x6281, 0xB000, 0x648B, 0x6488, 0xC200},
           drawConfiguration,
           notAll},
          {"SetApplicationDefaults", {0x6280, 0x648B, 0x6488, 0x8300}, drawApplication, notAll},
          {"ResetFactoryDefaults",
           {0x6498, 0x6481, 0xBB00, 0x648C, 0x6280, 0x6281, 0xB000, 0x648B, 0x6488, 0xC200, 0x8300},
           drawFactory,
           notAll},
          {"ConfigureNmeaPolling", {0x6481}, drawPolling, notAll},
      }};
}

}  // namespace orb::test
