#include "model/commands.h"

#include <algorithm>
#include <iterator>

#include "model/solution.h"
#include "model/starts.h"
#include "model/survey.h"

namespace orb::sim {
namespace {

template <auto Setting>
constexpr Command setting(std::string_view name, message::Id id, std::size_t length,
                          bool hasAttribute = true) {
  const auto store = [](Settings& settings, BodyReader& body) { body.read(settings.*Setting); };
  return {.name = name, .id = id, .length = length, .store = store, .hasAttribute = hasAttribute};
}

constexpr Command query(std::string_view name, message::Id id, std::size_t length,
                        message::Id reply, void (*report)(const State&, BodyWriter&)) {
  return {.name = name, .id = id, .length = length, .report = report, .reply = reply};
}

/// A query that is answered with a setting alone.
template <auto Setting>
constexpr Command query(std::string_view name, message::Id id, std::size_t length,
                        message::Id reply) {
  return query(name, id, length, reply,
               [](const State& state, BodyWriter& body) { body.write(state.*Setting); });
}

constexpr Command order(std::string_view name, message::Id id, std::size_t length,
                        void (*obey)(State&, Settings&, const Bytes&)) {
  return {.name = name, .id = id, .length = length, .obey = obey};
}

// Each version is a group of four bytes whose first byte says nothing.
void reportRevision(const State& state, BodyWriter& body) {
  constexpr std::uint8_t kSoftwareType = 1;
  constexpr std::uint8_t kNothing = 0;
  const Identity& identity = state.identity;
  body.write(kSoftwareType);
  for (const Version& version : {identity.kernel, identity.odm}) {
    body.write(kNothing, version.x, version.y, version.z);
  }
  body.write(kNothing, identity.revisionYear, identity.revisionMonth, identity.revisionDay);
}

void reportTiming(const State& state, BodyWriter& body) {
  const auto surveyed = std::chrono::duration_cast<std::chrono::seconds>(state.surveyed).count();
  body.write(state.timing, state.runningTimingMode(), static_cast<std::uint32_t>(surveyed));
}

void reportInterference(const State& state, BodyWriter& body) {
  constexpr std::uint8_t kUnknown = 0;
  const bool detects = state.interferenceDetection != 0;
  body.write(state.interferenceDetection, detects ? state.interferenceStatus : kUnknown);
}

// The leap seconds stand there twice: now, and to come into force; no change is announced.
void reportGpsTime(const State& state, BodyWriter& body) {
  const GpsTime time = reportedTime(state);
  body.write(static_cast<std::uint32_t>(time.timeOfWeek.count()), alignment(state), time.week,
             time.leapSeconds, time.leapSeconds, time.valid);
}

void reportVersionExtension(const State& state, BodyWriter& body) {
  constexpr std::size_t kWidth = 32;
  body.text(state.identity.versionExtension, kWidth);
}

/// The first byte tells how to start. The date, the time and the place that may follow are hints
/// for a receiver that has lost its own, and this one takes none.
void softReset(State& state, Settings& saved, const Bytes& body) {
  constexpr Start kStarts[] = {Start::Hot, Start::Warm, Start::Cold};
  ++state.softResets;
  state.lastSoftReset = body;
  if (body[0] >= 1 && body[0] <= std::size(kStarts)) {
    startAnew(state, saved, kStarts[body[0] - 1]);
  }
}

/// The flag asks it to forget what it knows.
void restart(State& state, Settings& saved, const Bytes& body) {
  ++state.restarts;
  state.lastRestart = body;
  startAnew(state, saved, body[0] == 0 ? Start::Hot : Start::Cold);
}

void setFactoryDefaults(State& state, Settings& saved, const Bytes&) {
  saved = Settings{};
  static_cast<Settings&>(state) = saved;
  beginSurvey(state);
  ++state.factoryResets;
}

using S = Settings;
namespace id = message;

constexpr Command kCommands[] = {
    order("soft-reset", id::kRestartSystem, 15, softReset),
    order("set-factory-defaults", id::kSetFactoryDefaults, 2, setFactoryDefaults),
    order("restart", id::kRestart, 3, restart),

    setting<&S::serialPort>("set-serial-port", id::kSetUpSerialPort, 4),
    setting<&S::outputType>("set-output-type", id::kSelectOutputType, 3),
    setting<&S::powerMode>("set-power-mode", id::kSetPowerMode, 3),
    setting<&S::updateRate>("set-update-rate", id::kConfigureUpdateRate, 3),
    setting<&S::dopMask>("set-dop-mask", id::kConfigureDopMask, 9),
    setting<&S::elevationCnrMask>("set-elevation-cnr-mask", id::kConfigureElevationCnrMask, 5),
    setting<&S::cableDelay>("set-cable-delay", id::kConfigureCableDelay, 6),
    setting<&S::timing>("set-timing", id::kConfigureTiming, 31),
    setting<&S::ppsOutput>("set-pps-output", id::kConfigurePpsOutputMode, 4),
    setting<&S::sbas>("set-sbas", id::kConfigureSbas, 9),
    setting<&S::qzss>("set-qzss", id::kConfigureQzss, 5),
    setting<&S::nmeaIntervals>("set-nmea-intervals", id::kConfigureExtendedNmea, 15),
    setting<&S::interferenceDetection>("set-interference-detection", id::kConfigureInterference, 4,
                                       false),
    setting<&S::fixNavMask>("set-fix-mask", id::kConfigureFixMask, 5),
    setting<&S::navigationMode>("set-navigation-mode", id::kConfigureNavigationMode, 4),
    setting<&S::constellations>("set-constellations", id::kConfigureConstellations, 5),
    setting<&S::navMessageInterval>("set-navigation-interval", id::kConfigureNavigationInterval, 4),
    setting<&S::secondBand>("set-second-band", id::kConfigureSecondBand, 4),
    setting<&S::ppsPulseWidth>("set-pps-pulse-width", id::kConfigurePulseWidth, 7),
    setting<&S::pps2Frequency>("set-pps2-frequency", id::kConfigurePps2Frequency, 7),

    query("query-software-revision", id::kQueryRevision, 2, id::kRevision, reportRevision),
    query<&S::updateRate>("query-update-rate", id::kQueryUpdateRate, 1, id::kUpdateRate),
    query<&S::powerMode>("query-power-mode", id::kQueryPowerMode, 1, id::kPowerMode),
    query<&S::dopMask>("query-dop-mask", id::kQueryDopMask, 1, id::kDopMask),
    query<&S::elevationCnrMask>("query-elevation-cnr-mask", id::kQueryElevationCnrMask, 1,
                                id::kElevationCnrMask),
    query("query-timing", id::kQueryTiming, 1, id::kTiming, reportTiming),
    query<&S::cableDelay>("query-cable-delay", id::kQueryCableDelay, 1, id::kCableDelay),
    query<&S::ppsOutput>("query-pps-output", id::kQueryPpsOutputMode, 1, id::kPpsOutputMode),
    query<&S::sbas>("query-sbas", id::kQuerySbas, 2, id::kSbas),
    query<&S::qzss>("query-qzss", id::kQueryQzss, 2, id::kQzss),
    query<&S::nmeaIntervals>("query-nmea-intervals", id::kQueryExtendedNmea, 2, id::kExtendedNmea),
    query("query-interference-detection", id::kQueryInterference, 2, id::kInterference,
          reportInterference),
    query<&S::fixNavMask>("query-fix-mask", id::kQueryFixMask, 2, id::kFixMask),
    query<&S::navigationMode>("query-navigation-mode", id::kQueryNavigationMode, 2,
                              id::kNavigationMode),
    query<&S::constellations>("query-constellations", id::kQueryConstellations, 2,
                              id::kConstellations),
    query("query-gps-time", id::kQueryGpsTime, 2, id::kGpsTime, reportGpsTime),
    query<&S::navMessageInterval>("query-navigation-interval", id::kQueryNavigationInterval, 2,
                                  id::kNavigationInterval),
    query<&S::secondBand>("query-second-band", id::kQuerySecondBand, 2, id::kSecondBand),
    query("query-version-extension", id::kQueryVersionExtension, 2, id::kVersionExtension,
          reportVersionExtension),
    query<&S::ppsPulseWidth>("query-pps-pulse-width", id::kQueryPulseWidth, 2, id::kPulseWidth),
    query<&S::pps2Frequency>("query-pps2-frequency", id::kQueryPps2Frequency, 2,
                             id::kPps2Frequency),
};

}  // namespace

const Command* findCommand(message::Id id) {
  const auto* const row = std::find_if(std::begin(kCommands), std::end(kCommands),
                                       [&](const Command& command) { return command.id == id; });
  return row == std::end(kCommands) ? nullptr : row;
}

const Command* findCommand(std::string_view name) {
  const auto* const row =
      std::find_if(std::begin(kCommands), std::end(kCommands),
                   [&](const Command& command) { return command.name == name; });
  return row == std::end(kCommands) ? nullptr : row;
}

bool isSetting(message::Id id) {
  const Command* const command = findCommand(id);
  return command != nullptr && command->store != nullptr;
}

}  // namespace orb::sim
