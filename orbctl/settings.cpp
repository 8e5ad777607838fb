#include "orbctl/settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "orbctl/failure.h"
#include "orbctl/words.h"

namespace orb::ctl {
namespace {

// An operation that reads one number, or switch, into its only argument, and one that sets it.

template <const char* kOperation>
Json readNumber(Session& session) {
  return std::get<long long>(session.call(kOperation, {0LL}).front());
}

template <const char* kOperation>
void writeNumber(Session& session, const Json& value) {
  session.call(kOperation, {value.get<long long>()});
}

template <const char* kOperation>
Json readSwitch(Session& session) {
  return std::get<bool>(session.call(kOperation, {false}).front());
}

template <const char* kOperation>
void writeSwitch(Session& session, const Json& value) {
  session.call(kOperation, {value.get<bool>()});
}

// Names of operations as template arguments.
constexpr char kGetAntennaDelay[] = "getAntennaDelay";
constexpr char kSetAntennaDelay[] = "setAntennaDelay";
constexpr char kGetMinCNo[] = "getMinCNo";
constexpr char kSetMinCNo[] = "setMinCNo";
constexpr char kGetElevationLimit[] = "getElevationLimit";
constexpr char kSetElevationLimit[] = "setElevationLimit";
constexpr char kGetPulseWidth[] = "gpsObtGetTimePulse";
constexpr char kSetPulseWidth[] = "gpsObtTimePulseConfigure";
constexpr char kGetFrequency[] = "gpsObtGetFreqOutput";
constexpr char kSetFrequency[] = "gpsObtFreqOutputConfigure";
constexpr char kGetRate[] = "gpsOrbGetCfgRate";
constexpr char kSetRate[] = "gpsObtSetCfgRate";
constexpr char kGetNavigationInterval[] = "gpsObtGetNavMsg";
constexpr char kSetNavigationInterval[] = "gpsObtNavMsgConfigure";
constexpr char kGetExtendedNmea[] = "gpsObtGetNmeaExtendedConfigure";
constexpr char kSetExtendedNmea[] = "gpsObtNmeaExtendedConfigure";
constexpr char kGetSbas[] = "gpsObtGetSbasConfigure";
constexpr char kSetSbas[] = "gpsObtSbasConfigure";
constexpr char kGetQzss[] = "gpsObtGetQzssConfigure";
constexpr char kSetQzss[] = "gpsObtQzssConfigure";
constexpr char kGetSecondBand[] = "gpsObtGetL2BandConfigure";
constexpr char kSetSecondBand[] = "gpsObtL2BandConfigure";
constexpr char kSetInterference[] = "setJammingDetection";

Json readInterference(Session& session) {
  return std::get<bool>(session.call("gpsOrbGetJamDetectConfig", {false, 0LL}).front());
}

// Constellations: a bit for each index of gnssNames; those that the receiver switches apart are
// settings of their own.

constexpr std::array<std::pair<const char*, int>, 4> kConstellations = {
    {{"gps", 0}, {"galileo", 2}, {"beidou", 3}, {"glonass", 6}}};

Json readConstellations(Session& session) {
  const auto mask = std::get<long long>(session.call("getGnssSystem", {0LL}).front());
  Json names = Json::array();
  for (const auto& [name, bit] : kConstellations) {
    if (((mask >> bit) & 1) != 0) {
      names.push_back(name);
    }
  }
  return names;
}

void writeConstellations(Session& session, const Json& value) {
  long long mask = 0;
  for (const auto& [name, bit] : kConstellations) {
    mask |= std::find(value.begin(), value.end(), name) != value.end() ? 1LL << bit : 0;
  }
  session.call("gpsObtGnssConfigure", {mask});
}

Json readFixMode(Session& session) {
  const Values fix = session.call("gpsObtGetFixNavConfigure", {std::string(), std::string()});
  const std::string first = lowered(std::get<std::string>(fix[0]));
  const std::string second = lowered(std::get<std::string>(fix[1]));
  return first == second ? first : first + "-" + second;
}

void writeFixMode(Session& session, const Json& value) {
  const auto text = value.get<std::string>();
  const auto upper = [](const std::string& word) { return word.substr(0, 1) + "D"; };
  session.call("gpsObtFixNavConfigure", {upper(text), upper(text.substr(text.size() - 2))});
}

Json readNavigationMode(Session& session) {
  return std::get<long long>(session.call("gpsObtGetChangeDynamicMode", {0LL}).front());
}

constexpr long long kLastNavigationMode = 5;

/// The driver takes a model; each mode has one that is sent as it.
void writeNavigationMode(Session& session, const Json& value) {
  constexpr std::array<long long, kLastNavigationMode + 1> kModelOfMode = {8, 0, 3, 4, 5, 6};
  session.call("gpsObtChangeDynamicMode", {kModelOfMode.at(value.get<std::size_t>())});
}

Json readPowerMode(Session& session) {
  return lowered(std::get<std::string>(session.call("getRxMode", {std::string()}).front()));
}

void writePowerMode(Session& session, const Json& value) {
  session.call("setRxMode", {uppered(value.get<std::string>())});
}

// Output mode and alignment of 1PPS are set together: the other one is kept.

Values readPps(Session& session) { return session.call("gpsOrbGet1ppsOutputMode", {0LL, 0LL}); }

Json readPpsMode(Session& session) { return std::get<long long>(readPps(session)[0]); }

void writePpsMode(Session& session, const Json& value) {
  session.call("gpsOrb1ppsOutputMode", {value.get<long long>(), readPps(session)[1]});
}

Json readTimeReference(Session& session) {
  const auto source = std::get<long long>(readPps(session)[1]);
  return source == 0 ? "gnss" : source == 1 ? "utc" : fmt::format("unknown ({})", source);
}

void writeTimeReference(Session& session, const Json& value) {
  session.call("gpsOrb1ppsOutputMode", {readPps(session)[0], value == "utc" ? 1LL : 0LL});
}

Json readDopMask(Session& session) {
  const Values mask = session.call("gpsObtGetDopConfigure", {0LL, 0LL, 0LL, 0LL});
  if (mask == Values{1LL, 250LL, 250LL, 250LL}) {
    return "default";
  }
  return fmt::format("mode {}, limits {} {} {}", std::get<long long>(mask[0]),
                     std::get<long long>(mask[1]), std::get<long long>(mask[2]),
                     std::get<long long>(mask[3]));
}

void writeDopMask(Session& session, const Json& /*value*/) { session.call("gpsObtDopConfigure"); }

void writeOutput(Session& session, const Json& value) {
  const std::string word = uppered(value.get<std::string>());
  session.call("gpsObtSetMsgType", {word == "NONE" ? "NO" : word});
}

using enum Setting::Kind;

// Key, what it is, kind, words, operations, functions.
constexpr Setting kSettings[] = {
    {"antenna-delay", "delay of the antenna cable", Number, "", kGetAntennaDelay, kSetAntennaDelay,
     readNumber<kGetAntennaDelay>, writeNumber<kSetAntennaDelay>},
    {"constellations", "satellite systems in use", Words, "gps,galileo,beidou,glonass",
     "getGnssSystem", "gpsObtGnssConfigure", readConstellations, writeConstellations},
    {"sbas", "satellite-based augmentation", Switch, "", kGetSbas, kSetSbas, readSwitch<kGetSbas>,
     writeSwitch<kSetSbas>},
    {"qzss", "QZSS satellites", Switch, "", kGetQzss, kSetQzss, readSwitch<kGetQzss>,
     writeSwitch<kSetQzss>},
    {"second-band", "second frequency band", Switch, "", kGetSecondBand, kSetSecondBand,
     readSwitch<kGetSecondBand>, writeSwitch<kSetSecondBand>},
    {"cnr-limit", "carrier-to-noise ratio mask: weaker satellites are not used", Number, "",
     kGetMinCNo, kSetMinCNo, readNumber<kGetMinCNo>, writeNumber<kSetMinCNo>},
    {"elevation-limit", "elevation mask: lower satellites are not used", Number, "",
     kGetElevationLimit, kSetElevationLimit, readNumber<kGetElevationLimit>,
     writeNumber<kSetElevationLimit>},
    {"fix-mode", "what a fix has to be, the first and each later one", Word, "2d,3d,2d-3d,3d-2d",
     "gpsObtGetFixNavConfigure", "gpsObtFixNavConfigure", readFixMode, writeFixMode},
    {"dop-mask", "limits of the dilution of precision", Word, "default", "gpsObtGetDopConfigure",
     "gpsObtDopConfigure", readDopMask, writeDopMask},
    {"navigation-mode", "navigation mode, in the receiver's numbers", Number, "",
     "gpsObtGetChangeDynamicMode", "gpsObtChangeDynamicMode", readNavigationMode,
     writeNavigationMode, kLastNavigationMode},
    {"interference-detection", "detection of interference", Switch, "", "gpsOrbGetJamDetectConfig",
     kSetInterference, readInterference, writeSwitch<kSetInterference>},
    {"time-reference", "what 1PPS is aligned to", Word, "gnss,utc", "gpsOrbGet1ppsOutputMode",
     "gpsOrb1ppsOutputMode", readTimeReference, writeTimeReference},
    {"pps-mode", "when there is a 1PPS pulse, in the receiver's numbers", Number, "",
     "gpsOrbGet1ppsOutputMode", "gpsOrb1ppsOutputMode", readPpsMode, writePpsMode},
    {"pulse-width", "width of the 1PPS pulse", Number, "", kGetPulseWidth, kSetPulseWidth,
     readNumber<kGetPulseWidth>, writeNumber<kSetPulseWidth>},
    {"frequency-output", "frequency of the second pulse output", Number, "", kGetFrequency,
     kSetFrequency, readNumber<kGetFrequency>, writeNumber<kSetFrequency>},
    {"power-mode", "power mode", Word, "normal,powersave", "getRxMode", "setRxMode", readPowerMode,
     writePowerMode},
    {"update-rate", "position updates a second", Number, "", kGetRate, kSetRate,
     readNumber<kGetRate>, writeNumber<kSetRate>},
    {"navigation-interval", "epochs between two navigation data messages", Number, "",
     kGetNavigationInterval, kSetNavigationInterval, readNumber<kGetNavigationInterval>,
     writeNumber<kSetNavigationInterval>},
    {"nmea-interval", "epochs between two extended NMEA sentences of a kind", Number, "",
     kGetExtendedNmea, kSetExtendedNmea, readNumber<kGetExtendedNmea>,
     writeNumber<kSetExtendedNmea>},
    {"output", "what the receiver sends of its own accord; no query reads it", Word,
     "none,nmea,binary", "", "gpsObtSetMsgType", nullptr, writeOutput},
};

}  // namespace

std::span<const Setting> settings() { return kSettings; }

const Setting& settingNamed(std::string_view key) {
  std::vector<std::string> keys;
  for (const Setting& setting : kSettings) {
    if (setting.key == key) {
      return setting;
    }
    keys.emplace_back(setting.key);
  }
  const std::string near = nearest(key, keys);
  throw Failure(ExitStatus::WrongUse, fmt::format("there is no key '{}'", key),
                near.empty() ? "see all with: orbctl keys" : fmt::format("did you mean {}?", near));
}

}  // namespace orb::ctl
