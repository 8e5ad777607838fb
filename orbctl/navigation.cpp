#include "orbctl/navigation.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <charconv>
#include <map>
#include <sstream>

#include "orbctl/complaint.h"
#include "orbctl/failure.h"
#include "orbctl/reply_fields.h"

namespace orb::ctl {
namespace {

double number(const std::string& text) {
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

/// Hundredths and ten-millionths of 32 bits come without their sign.
double withSign(double value, double range) { return value > range / 2 ? value - range : value; }

std::string surveyMode(long long number) {
  constexpr const char* kModes[] = {"dynamic", "auto", "static"};
  const bool isKnown = number >= 0 && number < static_cast<long long>(std::size(kModes));
  return isKnown ? kModes[number] : fmt::format("unknown ({})", number);
}

/// The reply tells of a survey's progress after the fields that the library reads; not every
/// firmware's does.
void addProgress(Session& session, Json& survey) {
  constexpr char kQueryTiming = 0x44;
  for (const std::string& reply : session.exchange(std::string(1, kQueryTiming))) {
    for (const ReplyField& field : fieldsOf(reply)) {
      if (field.name == "present mode") {
        survey["present_mode"] = surveyMode(std::stoll(field.value));
      } else if (field.name == "surveyed") {
        survey["surveyed"] = std::stoll(field.value);
      }
    }
  }
}

constexpr double kDegreeRange = 429.4967296;
constexpr double kMetreRange = 42949672.96;

}  // namespace

BinaryOutput::BinaryOutput(Session& session) : session_(session) {
  const LineReport line = session_.listen();
  if (line.state == LineReport::State::Packets) {
    return;
  }
  if (line.state != LineReport::State::Text && line.state != LineReport::State::Silent) {
    throw Failure(ExitStatus::NoReply, describe(line), "find out why with: orbctl doctor");
  }
  blockSignals();
  before_ = line.state == LineReport::State::Text ? "NMEA" : "NO";
  try {
    session_.call("gpsObtSetMsgType", {std::string("BINARY")});
  } catch (...) {
    restore();  // it may have been obeyed all the same
    throw;
  }
}

void BinaryOutput::blockSignals() {
  sigset_t ending;
  sigemptyset(&ending);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    sigaddset(&ending, signal);
  }
  ::pthread_sigmask(SIG_BLOCK, &ending, &signalsBefore_);
}

BinaryOutput::~BinaryOutput() {
  if (!before_.empty()) {
    restore();
  }
}

void BinaryOutput::restore() {
  try {
    session_.call("gpsObtSetMsgType", {before_});
  } catch (const Failure& failure) {
    complain(
        fmt::format("orbctl: warning: the receiver's output stays binary: {}\n", failure.what()));
  }
  ::pthread_sigmask(SIG_SETMASK, &signalsBefore_, nullptr);
}

Json readNavigation(Session& session) {
  session.requireReceiver();
  const BinaryOutput output(session);
  return readSolution(session);
}

Json readSolution(Session& session) {
  const std::string solution =
      std::get<std::string>(session.call("getNavsolution", {std::string(), std::string()})[1]);
  std::map<std::string, std::string> fields;
  std::istringstream lines(solution);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t equals = line.find('=');
    if (equals != std::string::npos) {
      fields[line.substr(0, equals)] = line.substr(equals + 1);
    }
  }
  // Without a fix, the numbers are of no place.
  const bool isKnown = fields["fix mode"] != "NO-FIX";
  const auto place = [&](const char* field, double range) {
    return isKnown ? Json(withSign(number(fields[field]), range)) : Json();
  };
  return {{"fix", fields["fix mode"]},
          {"satellites", static_cast<int>(number(fields["number if sv in fix"]))},
          {"gps_week", static_cast<int>(number(fields["GPS Week"]))},
          {"time_of_week", number(fields["GPS TOW"])},
          {"latitude", place("latitude", kDegreeRange)},
          {"longitude", place("longitude", kDegreeRange)},
          {"ellipsoid_altitude", place("ellipsoid altitude", kMetreRange)},
          {"sea_level_altitude", place("sea level altitude", kMetreRange)}};
}

Json readTime(Session& session) {
  const Values time = session.call("gpsObtGetGpsTime", {0LL, 0LL, 0LL, 0LL, 0LL});
  const auto field = [&](std::size_t i) { return std::get<long long>(time[i]); };
  Json result{{"time_of_week_ms", field(0)},
              {"sub_ms_ns", field(1)},
              {"gps_week", field(2)},
              {"leap_seconds", field(3)},
              {"valid", field(4)}};
  constexpr long long kTimeOfWeekKnown = 1;
  constexpr long long kWeekKnown = 2;
  constexpr long long kLeapSecondsKnown = 4;
  constexpr long long kAllKnown = kTimeOfWeekKnown | kWeekKnown | kLeapSecondsKnown;
  if ((field(4) & kAllKnown) == kAllKnown) {
    using namespace std::chrono_literals;
    constexpr auto kGpsStart = std::chrono::sys_days(std::chrono::January / 6 / 1980);
    const auto utc = kGpsStart + std::chrono::weeks(field(2)) +
                     std::chrono::milliseconds(field(0)) - std::chrono::seconds(field(3));
    const auto seconds = std::chrono::floor<std::chrono::seconds>(utc);
    result["utc"] = fmt::format("{:%Y-%m-%d %H:%M:%S}.{:03d}",
                                fmt::gmtime(std::chrono::system_clock::to_time_t(seconds)),
                                (utc - seconds) / 1ms);
  } else {
    result["utc"] = nullptr;
  }
  return result;
}

Json readSurvey(Session& session) {
  const Values timing = session.call("gpsObtGetTimeMode", {0LL, 0LL, 0LL, 0.0, 0.0, 0.0});
  Json survey{{"mode", surveyMode(std::get<long long>(timing[0]))},
              {"length", std::get<long long>(timing[1])},
              {"deviation", std::get<long long>(timing[2])},
              {"latitude", std::get<double>(timing[3])},
              {"longitude", std::get<double>(timing[4])},
              {"altitude", std::get<double>(timing[5])}};
  if (survey["mode"] == "auto") {
    addProgress(session, survey);
  }
  return survey;
}

Json readInterference(Session& session) {
  const Values jamming = session.call("gpsOrbGetJamDetectConfig", {false, 0LL});
  const auto status = std::get<long long>(jamming[1]);
  constexpr const char* kMeanings[] = {"not known", "none", "some", "critical"};
  const bool isKnown = status >= 0 && status < static_cast<long long>(std::size(kMeanings));
  return {{"detection", std::get<bool>(jamming[0])},
          {"status", status},
          {"interference", kMeanings[isKnown ? status : 0]}};
}

std::string describeTime(const Json& time) {
  if (time["utc"].is_null()) {
    return "the receiver does not know the time yet";
  }
  return fmt::format("{} UTC, GPS week {}, {} leap seconds", time["utc"].get<std::string>(),
                     time["gps_week"].get<int>(), time["leap_seconds"].get<int>());
}

std::string describeSurvey(const Json& survey) {
  const auto place = [&] {
    return fmt::format("{:.7f} degrees, {:.7f} degrees, {:.2f} m", survey["latitude"].get<double>(),
                       survey["longitude"].get<double>(), survey["altitude"].get<double>());
  };
  const auto mode = survey["mode"].get<std::string>();
  if (mode == "static") {
    return "static at " + place();
  }
  if (mode != "auto") {
    return mode;
  }
  const auto length = survey["length"].get<long long>();
  if (!survey.contains("surveyed")) {
    return fmt::format("auto, for {} s", length);
  }
  return survey["present_mode"] == "static"
             ? fmt::format("surveyed for {} s, now static at {}", length, place())
             : fmt::format("auto, {} s of {} s", survey["surveyed"].get<long long>(), length);
}

std::string describeInterference(const Json& interference) {
  return interference["detection"].get<bool>()
             ? fmt::format("detection on, interference: {}",
                           interference["interference"].get<std::string>())
             : "detection off";
}

}  // namespace orb::ctl
