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

// The leap seconds stand there twice: now, and once an announced one has come into force.
void reportGpsTime(const State& state, BodyWriter& body) {
  const GpsTime time = reportedTime(state);
  const auto announced = static_cast<std::uint8_t>(time.leapSeconds + (time.leapSecond ? 1 : 0));
  body.write(static_cast<std::uint32_t>(time.timeOfWeek.count()), alignment(state), time.week,
             time.leapSeconds, announced, time.valid);
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

// Each row: its name in scenarios, its message, the length of the payload, and a query's reply.
constexpr Command kCommands[] = {
    order("soft-reset", 0x0100, 15, softReset),
    order("set-factory-defaults", 0x0400, 2, setFactoryDefaults),
    order("restart", 0x643F, 3, restart),

    setting<&S::serialPort>("set-serial-port", 0x0500, 4),
    setting<&S::outputType>("set-output-type", 0x0900, 3),
    setting<&S::powerMode>("set-power-mode", 0x0C00, 3),
    setting<&S::updateRate>("set-update-rate", 0x0E00, 3),
    setting<&S::dopMask>("set-dop-mask", 0x2A00, 9),
    setting<&S::elevationCnrMask>("set-elevation-cnr-mask", 0x2B00, 5),
    setting<&S::cableDelay>("set-cable-delay", 0x4500, 6),
    setting<&S::timing>("set-timing", message::kSetTiming, 31),
    setting<&S::ppsOutput>("set-pps-output", 0x5500, 4),
    setting<&S::sbas>("set-sbas", 0x6201, 9),
    setting<&S::qzss>("set-qzss", 0x6203, 5),
    setting<&S::nmeaIntervals>("set-nmea-intervals", 0x6402, 15),
    setting<&S::interferenceDetection>("set-interference-detection", 0x6406, 4, false),
    setting<&S::fixNavMask>("set-fix-mask", 0x6411, 5),
    setting<&S::navigationMode>("set-navigation-mode", 0x6417, 4),
    setting<&S::constellations>("set-constellations", 0x6419, 5),
    setting<&S::navMessageInterval>("set-navigation-interval", 0x642F, 4),
    setting<&S::secondBand>("set-second-band", 0x6450, 4),
    setting<&S::ppsPulseWidth>("set-pps-pulse-width", 0x6501, 7),
    setting<&S::pps2Frequency>("set-pps2-frequency", 0x6503, 7),

    query("query-software-revision", 0x0200, 2, 0x8000, reportRevision),
    query<&S::updateRate>("query-update-rate", 0x1000, 1, message::kUpdateRate),
    query<&S::powerMode>("query-power-mode", 0x1500, 1, message::kPowerMode),
    query<&S::dopMask>("query-dop-mask", 0x2E00, 1, 0xAF00),
    query<&S::elevationCnrMask>("query-elevation-cnr-mask", 0x2F00, 1, 0xB000),
    query("query-timing", 0x4400, 1, 0xC200, reportTiming),
    query<&S::cableDelay>("query-cable-delay", 0x4600, 1, 0xBB00),
    query<&S::ppsOutput>("query-pps-output", 0x5600, 1, 0xC300),
    query<&S::sbas>("query-sbas", 0x6202, 2, 0x6280),
    query<&S::qzss>("query-qzss", 0x6204, 2, 0x6281),
    query<&S::nmeaIntervals>("query-nmea-intervals", 0x6403, 2, 0x6481),
    query("query-interference-detection", 0x6407, 2, 0x6483, reportInterference),
    query<&S::fixNavMask>("query-fix-mask", 0x6412, 2, 0x6488),
    query<&S::navigationMode>("query-navigation-mode", 0x6418, 2, message::kNavigationMode),
    query<&S::constellations>("query-constellations", 0x641A, 2, 0x648C),
    query("query-gps-time", 0x6420, 2, 0x648E, reportGpsTime),
    query<&S::navMessageInterval>("query-navigation-interval", 0x6430, 2, 0x6498),
    query<&S::secondBand>("query-second-band", 0x6451, 2, message::kSecondBand),
    query("query-version-extension", 0x647D, 2, 0x64FE, reportVersionExtension),
    query<&S::ppsPulseWidth>("query-pps-pulse-width", 0x6502, 2, 0x6580),
    query<&S::pps2Frequency>("query-pps2-frequency", 0x6504, 2, 0x6581),
};

}  // namespace

const Command* findCommand(message::Id id) {
  const auto* const row = std::ranges::find(kCommands, id, &Command::id);
  return row == std::end(kCommands) ? nullptr : row;
}

const Command* findCommand(std::string_view name) {
  const auto* const row = std::ranges::find(kCommands, name, &Command::name);
  return row == std::end(kCommands) ? nullptr : row;
}

bool isSetting(message::Id id) {
  const Command* const command = findCommand(id);
  return command != nullptr && command->store != nullptr;
}

}  // namespace orb::sim
