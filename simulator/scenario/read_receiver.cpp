#include <charconv>
#include <chrono>
#include <ratio>
#include <sstream>
#include <string_view>

#include "scenario/readers.h"

namespace orb::sim {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kLongestVersionExtension = 32;

constexpr Word<std::uint8_t> kPowerModes[] = {{"normal", 0}, {"power-saving", 1}};
constexpr Word<OutputType> kOutputTypes[] = {
    {"none", OutputType::None}, {"nmea", OutputType::Nmea}, {"binary", OutputType::Binary}};
constexpr Word<std::uint8_t> kRequiredFixes[] = {{"3d", 0}, {"2d", 1}};
constexpr Word<std::uint16_t> kConstellationBits[] = {
    {"gps", 1}, {"glonass", 2}, {"galileo", 4}, {"beidou", 8}};
constexpr Word<TimingMode> kTimingModes[] = {{"dynamic", TimingMode::Dynamic},
                                             {"survey", TimingMode::AutoSurvey},
                                             {"static", TimingMode::Static}};
constexpr Word<std::uint8_t> kTimeReferences[] = {{"gnss", 0}, {"utc", 1}};
constexpr Word<std::uint8_t> kPulseConditions[] = {
    {"always", 0}, {"with-a-fix", 1}, {"with-a-satellite", 2}};
/// In the order of Settings::nmeaIntervals.
constexpr std::string_view kSentences[] = {"gga", "gsa", "gsv", "gll", "rmc", "vtg", "zda"};

/// The version that a text like "1.0.12" names.
std::optional<Version> versionOf(std::string_view text) {
  Version version;
  for (std::uint8_t* part : {&version.x, &version.y, &version.z}) {
    const auto [end, error] = std::from_chars(text.begin(), text.end(), *part);
    const bool last = part == &version.z;
    if (error != std::errc() || (last ? end != text.end() : end == text.end() || *end != '.')) {
      return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.begin()) + (last ? 0 : 1));
  }
  return version;
}

void readVersion(TableReader& receiver, std::string_view key, Version& version) {
  constexpr std::size_t kLongest = 100;
  std::string text;
  if (!receiver.text(key, text, kLongest)) {
    return;
  }
  if (const auto read = versionOf(text)) {
    version = *read;
  } else {
    receiver.refuse(key, "is " + inQuotes(text) +
                             "; it has to be three numbers from 0 to 255, such as \"1.0.12\"");
  }
}

void readRevisionDate(TableReader& receiver, Identity& identity) {
  constexpr char kKey[] = "revision-date";
  constexpr int kFirstYear = 2000;
  constexpr int kLastYear = 2099;
  const toml::node* node = receiver.find(kKey);
  if (node == nullptr) {
    return;
  }
  const auto date = node->value_exact<toml::date>();
  if (!date || date->year < kFirstYear || date->year > kLastYear) {
    std::ostringstream found;
    date ? found << *date : found << typeName(*node);
    receiver.refuse(kKey,
                    "is " + found.str() + "; it has to be a date from 2000-01-01 to 2099-12-31");
    return;
  }
  identity.revisionYear = static_cast<std::uint8_t>(date->year - kFirstYear);
  identity.revisionMonth = date->month;
  identity.revisionDay = date->day;
}

void readIdentity(TableReader& receiver, Identity& identity) {
  readVersion(receiver, "kernel-version", identity.kernel);
  readVersion(receiver, "odm-version", identity.odm);
  readRevisionDate(receiver, identity);
  receiver.text("version-extension", identity.versionExtension, kLongestVersionExtension);
}

void readConstellations(TableReader& receiver, Settings& settings) {
  constexpr char kKey[] = "constellations";
  std::vector<std::uint16_t> bits;
  receiver.words(kKey, bits, kConstellationBits);
  if (receiver.has(kKey)) {
    settings.constellations = 0;
    for (const std::uint16_t bit : bits) {
      settings.constellations = static_cast<std::uint16_t>(settings.constellations | bit);
    }
  }
}

void readEnabled(TableReader& receiver, std::string_view key, std::uint8_t& enabled) {
  bool flag = enabled != 0;
  receiver.flag(key, flag);
  enabled = flag ? 1 : 0;
}

void readOutput(TableReader& receiver, State& state) {
  Settings& settings = state;
  receiver.integer("update-rate", settings.updateRate, 0, 50);
  receiver.duration("output-delay", state.outputDelay, 0ms, 1s);
  receiver.duration("output-jitter", state.outputJitter, 0ms, 1s);
  receiver.table("nmea-intervals", [&](TableReader& intervals) {
    for (std::size_t i = 0; i < std::size(kSentences); ++i) {
      intervals.integer(kSentences[i], settings.nmeaIntervals[i], 0);
    }
  });
}

void readSatelliteSettings(TableReader& receiver, Settings& settings) {
  receiver.integer("elevation-mask", settings.elevationCnrMask.elevation, 0, 90);
  receiver.integer("cnr-mask", settings.elevationCnrMask.cnr, 0, 60);
  receiver.word("first-fix", settings.fixNavMask.first, kRequiredFixes);
  receiver.word("later-fixes", settings.fixNavMask.second, kRequiredFixes);
}

void readDopMask(TableReader& receiver, DopMask& mask) {
  constexpr double kTenths = 10;
  receiver.table("dop-mask", [&](TableReader& table) {
    mask.mode = 1;  // limits mean that the mask is on
    readEnabled(table, "enabled", mask.mode);
    table.scaled("position", mask.limits[0], kTenths, 0.5, 99.9);
    table.scaled("horizontal", mask.limits[1], kTenths, 0.5, 99.9);
    table.scaled("geometric", mask.limits[2], kTenths, 0.5, 99.9);
  });
}

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

void readSharedSettings(TableReader& table, Settings& settings) {
  readConstellations(table, settings);
  readEnabled(table, "sbas", settings.sbas[0]);
  readEnabled(table, "qzss", settings.qzss[0]);
  readEnabled(table, "second-band", settings.secondBand);
  readEnabled(table, "interference-detection", settings.interferenceDetection);
  table.integer("navigation-mode", settings.navigationMode, 0, 5);
  table.word("time-reference", settings.ppsOutput.alignSource, kTimeReferences);
  table.word("output", settings.outputType, kOutputTypes);
  table.integer("navigation-interval", settings.navMessageInterval, 0);
}

void readReceiver(TableReader& receiver, State& state) {
  readIdentity(receiver, state.identity);
  receiver.word("power-mode", state.powerMode, kPowerModes);
  readSharedSettings(receiver, state);
  readOutput(receiver, state);
  readSatelliteSettings(receiver, state);
  readDopMask(receiver, state.dopMask);
  readPulses(receiver, state);
  readTiming(receiver, state);
  receiver.word("interference", state.interferenceStatus, kInterference);
}

}  // namespace orb::sim
