#include <algorithm>
#include <chrono>
#include <iterator>
#include <string>
#include <vector>

#include "model/gps_time.h"
#include "scenario/readers.h"

namespace orb::sim {
namespace {

namespace chrono = std::chrono;
using namespace std::chrono_literals;
using chrono::milliseconds;
using chrono::sys_days;

constexpr Word<Scenario::Presence> kPresences[] = {
    {"answering", Scenario::Presence::Answering},
    {"silent", Scenario::Presence::Silent},
    {"absent", Scenario::Presence::Absent},
};

constexpr char kNoModule[] = "none";
constexpr std::size_t kLongestHardwareId = 100;
constexpr chrono::hours kLongestWait{24};

constexpr sys_days kLatest = 2100y / 1 / 1;  // and earlier

/// The time that a TOML date-time names; without an offset, it is UTC.
UtcTime utcOf(const toml::date_time& time) {
  const sys_days date = chrono::year{time.date.year} / time.date.month / time.date.day;
  const chrono::minutes offset{time.offset ? time.offset->minutes : 0};
  const milliseconds fraction{time.time.nanosecond / 1'000'000};
  return date + time.time.hour * 1h + time.time.minute * 1min + time.time.second * 1s + fraction -
         offset;
}

constexpr std::size_t kLongestChatter = 1000;

void readBaud(TableReader& line, unsigned int& baud) {
  constexpr std::int64_t kRates[] = {4800,    9600,    19'200,  38'400, 57'600,
                                     115'200, 230'400, 460'800, 921'600};
  constexpr char kKey[] = "baud";
  const auto isUsual = [&] {
    return std::find(std::begin(kRates), std::end(kRates), baud) != std::end(kRates);
  };
  if (line.integer(kKey, baud, 0) && !isUsual()) {
    std::vector<std::string> rates;
    for (const std::int64_t rate : kRates) {
      rates.push_back(std::to_string(rate));
    }
    line.refuse(kKey, "is " + std::to_string(baud) + "; it has to be " + alternatives(rates));
  }
}

/// The time that stands at a key; `accepted` tells in the problem what it has to be.
std::optional<UtcTime> utcAt(TableReader& time, std::string_view key, const std::string& accepted) {
  const toml::node& node = *time.find(key);
  const auto text = node.value_exact<std::string>();
  const auto dateTime = node.value_exact<toml::date_time>();
  if (!dateTime) {
    time.refuse(key,
                "is " + (text ? inQuotes(*text) : typeName(node)) + "; it has to be " + accepted);
    return std::nullopt;
  }
  const UtcTime utc = utcOf(*dateTime);
  if (utc < kGpsEpoch || utc >= kLatest) {
    time.refuse(key,
                "is outside the receiver's calendar; it has to be from 1980-01-06 to "
                "2099-12-31");
    return std::nullopt;
  }
  return utc;
}

void readStartingTime(TableReader& time, Scenario& scenario) {
  constexpr char kKey[] = "start";
  const toml::node* start = time.find(kKey);
  if (start == nullptr) {
    return;
  }
  if (start->value_exact<std::string>() == "now") {
    scenario.startsNow = true;
  } else if (const auto utc =
                 utcAt(time, kKey, "\"now\" or a date and time such as 2026-03-15T12:00:00Z")) {
    setUtc(scenario.state.time, *utc);
  }
}

void readLeapSecond(TableReader& time, GpsTime& gpsTime) {
  constexpr char kKey[] = "leap-second";
  if (!time.has(kKey)) {
    return;
  }
  const auto utc = utcAt(time, kKey, "a date and time such as 2027-01-01T00:00:00Z");
  if (utc && chrono::floor<chrono::minutes>(*utc) != *utc) {
    time.refuse(kKey, "is within a minute; it has to be the end of one");
  } else if (utc) {
    gpsTime.leapSecond = *utc;
  }
}

}  // namespace

void readDevice(TableReader& device, Scenario& scenario) {
  std::string module = kFittedModule;
  device.text("module", module, kLongestHardwareId);
  if (module.empty()) {
    device.refuse("module", R"(is ""; it has to be the module's identifier, or "none")");
  }
  scenario.hardwareId = module == kNoModule ? std::nullopt : std::optional(module);
  device.word("receiver", scenario.presence, kPresences);
  device.flag("talks-from-the-start", scenario.talksFromTheStart);
}

void readTime(TableReader& time, Scenario& scenario) {
  State& state = scenario.state;
  time.number("rate", state.clockRate, 0, kFastestClock);
  time.integer("leap-seconds", state.time.leapSeconds, 0, 99);
  readStartingTime(time, scenario);
  readLeapSecond(time, state.time);
}

void readStart(TableReader& start, Scenario& scenario) {
  StartTimes& times = scenario.state.startTimes;
  start.flag("cold", scenario.startsCold);
  start.duration("silence", times.silence, 0s, kLongestWait);
  start.duration("cold-fix", times.cold, 0s, kLongestWait);
  start.duration("warm-fix", times.warm, 0s, kLongestWait);
  start.duration("hot-fix", times.hot, 0s, kLongestWait);
}

void readLine(TableReader& line, LineConditions& conditions) {
  line.duration("latency", conditions.latency, 0ms, 1h);
  line.duration("spread", conditions.spread, 0ms, 1h);
  readBaud(line, conditions.baud);
  line.flag("checks-speed", conditions.checksSpeed);
  if (conditions.checksSpeed && conditions.baud > *std::rbegin(kSerialSpeeds)) {
    line.refuse("baud", "is " + std::to_string(conditions.baud) +
                            ", beside checks-speed; it has to be at most 115200, as the "
                            "receiver's serial port");
  }
  line.duration("chatter-interval", conditions.chatterInterval, 1ms, 1h);
  line.text("chatter", conditions.chatter, kLongestChatter);
}

}  // namespace orb::sim
