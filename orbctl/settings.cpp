#include "orbctl/settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <numeric>

#include "orbctl/failure.h"

namespace orb::ctl {
namespace {

std::vector<std::string> split(std::string_view words) {
  std::vector<std::string> result;
  while (!words.empty()) {
    const std::size_t end = std::min(words.find(','), words.size());
    result.emplace_back(words.substr(0, end));
    words.remove_prefix(std::min(end + 1, words.size()));
  }
  return result;
}

std::string lowered(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return result;
}

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

/// The driver takes a model; each mode has one that is sent as it.
void writeNavigationMode(Session& session, const Json& value) {
  constexpr std::array<long long, 6> kModelOfMode = {8, 0, 3, 4, 5, 6};
  session.call("gpsObtChangeDynamicMode", {kModelOfMode.at(value.get<std::size_t>())});
}

Json readPowerMode(Session& session) {
  return lowered(std::get<std::string>(session.call("getRxMode", {std::string()}).front()));
}

void writePowerMode(Session& session, const Json& value) {
  session.call("setRxMode", {std::string(value == "powersave" ? "POWERSAVE" : "NORMAL")});
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
  std::string word = value.get<std::string>();
  std::transform(word.begin(), word.end(), word.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  session.call("gpsObtSetMsgType", {word == "NONE" ? std::string("NO") : word});
}

using enum Setting::Kind;

// Key, what it is, kind, unit, range or words, operations, functions.
constexpr Setting kSettings[] = {
    {"antenna-delay", "delay of the antenna cable", Number, "ns", -5000, 5000, "", kGetAntennaDelay,
     kSetAntennaDelay, readNumber<kGetAntennaDelay>, writeNumber<kSetAntennaDelay>},
    {"constellations", "satellite systems in use", Words, "", 0, 0, "gps,galileo,beidou,glonass",
     "getGnssSystem", "gpsObtGnssConfigure", readConstellations, writeConstellations},
    {"sbas", "satellite-based augmentation", Switch, "", 0, 0, "", kGetSbas, kSetSbas,
     readSwitch<kGetSbas>, writeSwitch<kSetSbas>},
    {"qzss", "QZSS satellites", Switch, "", 0, 0, "", kGetQzss, kSetQzss, readSwitch<kGetQzss>,
     writeSwitch<kSetQzss>},
    {"second-band", "second frequency band", Switch, "", 0, 0, "", kGetSecondBand, kSetSecondBand,
     readSwitch<kGetSecondBand>, writeSwitch<kSetSecondBand>},
    {"cnr-limit", "carrier-to-noise ratio mask: weaker satellites are not used", Number, "dB-Hz", 0,
     40, "", kGetMinCNo, kSetMinCNo, readNumber<kGetMinCNo>, writeNumber<kSetMinCNo>},
    {"elevation-limit", "elevation mask: lower satellites are not used", Number, "degrees", 3, 85,
     "", kGetElevationLimit, kSetElevationLimit, readNumber<kGetElevationLimit>,
     writeNumber<kSetElevationLimit>},
    {"fix-mode", "what a fix has to be, the first and each later one", Word, "", 0, 0,
     "2d,3d,2d-3d,3d-2d", "gpsObtGetFixNavConfigure", "gpsObtFixNavConfigure", readFixMode,
     writeFixMode},
    {"dop-mask", "limits of the dilution of precision", Word, "", 0, 0, "default",
     "gpsObtGetDopConfigure", "gpsObtDopConfigure", readDopMask, writeDopMask},
    {"navigation-mode", "navigation mode, in the receiver's numbers", Number, "", 0, 5, "",
     "gpsObtGetChangeDynamicMode", "gpsObtChangeDynamicMode", readNavigationMode,
     writeNavigationMode},
    {"interference-detection", "detection of interference", Switch, "", 0, 0, "",
     "gpsOrbGetJamDetectConfig", kSetInterference, readInterference, writeSwitch<kSetInterference>},
    {"time-reference", "what 1PPS is aligned to", Word, "", 0, 0, "gnss,utc",
     "gpsOrbGet1ppsOutputMode", "gpsOrb1ppsOutputMode", readTimeReference, writeTimeReference},
    {"pps-mode", "when there is a 1PPS pulse, in the receiver's numbers", Number, "", 0, 255, "",
     "gpsOrbGet1ppsOutputMode", "gpsOrb1ppsOutputMode", readPpsMode, writePpsMode},
    {"pulse-width", "width of the 1PPS pulse", Number, "us", 1, 100000, "", kGetPulseWidth,
     kSetPulseWidth, readNumber<kGetPulseWidth>, writeNumber<kSetPulseWidth>},
    {"frequency-output", "frequency of the second pulse output", Number, "Hz", 0, 19200000, "",
     kGetFrequency, kSetFrequency, readNumber<kGetFrequency>, writeNumber<kSetFrequency>},
    {"power-mode", "power mode", Word, "", 0, 0, "normal,powersave", "getRxMode", "setRxMode",
     readPowerMode, writePowerMode},
    {"update-rate", "position updates a second", Number, "Hz", 0, 255, "", kGetRate, kSetRate,
     readNumber<kGetRate>, writeNumber<kSetRate>},
    {"navigation-interval", "epochs between two navigation data messages", Number, "", 0, 255, "",
     kGetNavigationInterval, kSetNavigationInterval, readNumber<kGetNavigationInterval>,
     writeNumber<kSetNavigationInterval>},
    {"nmea-interval", "epochs between two extended NMEA sentences of a kind", Number, "", 0, 255,
     "", kGetExtendedNmea, kSetExtendedNmea, readNumber<kGetExtendedNmea>,
     writeNumber<kSetExtendedNmea>},
    {"output", "what the receiver sends of its own accord; no query reads it", Word, "", 0, 0,
     "none,nmea,binary", "", "gpsObtSetMsgType", nullptr, writeOutput},
};

Failure notTaken(const Setting& setting, const std::string& text) {
  return {ExitStatus::WrongUse,
          fmt::format("{} takes {}, not '{}'", setting.key, rangeOf(setting), text),
          fmt::format("nothing was sent; see: orbctl keys {}", setting.key)};
}

std::string requireWord(const Setting& setting, const std::string& word, const std::string& text) {
  const std::vector<std::string> words = split(setting.words);
  const std::string lower = lowered(word);
  if (std::find(words.begin(), words.end(), lower) == words.end()) {
    throw notTaken(setting, text);
  }
  return lower;
}

/// The number of letters that are added, dropped or changed between the two.
std::size_t distance(std::string_view one, std::string_view other) {
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= one.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= other.size(); ++j) {
      const std::size_t change = diagonal + (one[i - 1] == other[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({change, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::span<const Setting> settings() { return kSettings; }

Json readOrWarn(const Setting& setting, Session& session) {
  try {
    return setting.read(session);
  } catch (const Failure& failure) {
    if (failure.status() != ExitStatus::NoReply) {
      throw;
    }
    fmt::print(stderr, "orbctl: warning: {} is left out: {}\n", setting.key, failure.what());
    return {};
  }
}

std::string nearest(std::string_view word, std::span<const std::string> words) {
  const std::string* best = nullptr;
  std::size_t least = std::max<std::size_t>(2, word.size() / 2) + 1;
  for (const std::string& candidate : words) {
    // The first part of a name is as good as a slip of the finger.
    const bool isPart = word.size() > 2 && candidate.find(word) != std::string::npos;
    const std::size_t far = isPart ? 1 : distance(word, candidate);
    if (far < least) {
      least = far;
      best = &candidate;
    }
  }
  return best == nullptr ? std::string() : *best;
}

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

std::string rangeOf(const Setting& setting) {
  switch (setting.kind) {
    case Setting::Kind::Number:
      return fmt::format("{} .. {}{}{}", setting.lowest, setting.highest,
                         setting.unit.empty() ? "" : " ", setting.unit);
    case Setting::Kind::Switch:
      return "on, off";
    case Setting::Kind::Word:
      return fmt::format("{}", fmt::join(split(setting.words), ", "));
    case Setting::Kind::Words:
      return fmt::format("any of {}, separated by commas", fmt::join(split(setting.words), ", "));
  }
  return {};
}

Json valueFrom(const Setting& setting, const std::string& text) {
  switch (setting.kind) {
    case Setting::Kind::Number: {
      long long number = 0;
      const char* const end = text.data() + text.size();
      const auto [stop, error] = std::from_chars(text.data(), end, number);
      if (text.empty() || error != std::errc() || stop != end || number < setting.lowest ||
          number > setting.highest) {
        throw notTaken(setting, text);
      }
      return number;
    }
    case Setting::Kind::Switch: {
      const std::string word = lowered(text);
      if (word != "on" && word != "off") {
        throw notTaken(setting, text);
      }
      return word == "on";
    }
    case Setting::Kind::Word:
      return requireWord(setting, text, text);
    case Setting::Kind::Words: {
      const std::vector<std::string> given = split(text);
      Json names = Json::array();
      for (const std::string& word : given) {
        requireWord(setting, word, text);
      }
      for (const std::string& name : split(setting.words)) {
        const bool isGiven = std::any_of(given.begin(), given.end(), [&](const std::string& word) {
          return lowered(word) == name;
        });
        if (isGiven) {
          names.push_back(name);
        }
      }
      if (names.empty()) {
        throw notTaken(setting, text);
      }
      return names;
    }
  }
  return {};
}

std::string textOf(const Json& value) {
  if (value.is_boolean()) {
    return value.get<bool>() ? "on" : "off";
  }
  if (value.is_string()) {
    return value.get<std::string>();
  }
  if (value.is_array()) {
    return value.empty() ? "none"
                         : fmt::format("{}", fmt::join(value.get<std::vector<std::string>>(), ","));
  }
  return value.dump();
}

}  // namespace orb::ctl
