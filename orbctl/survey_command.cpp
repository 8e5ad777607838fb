#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <thread>

#include "orbctl/argument.h"
#include "orbctl/command.h"
#include "orbctl/complaint.h"
#include "orbctl/failure.h"
#include "orbctl/navigation.h"

namespace orb::ctl {
namespace {

struct Position {
  double latitude = 0;
  double longitude = 0;
  double altitude = 0;
};

/// The standard deviation is checked by the library, and not sent.
constexpr double kDeviation = 1;

void showSurvey(const Options& options, const Json& survey) {
  show(options, "survey", survey, describeSurvey(survey) + "\n");
}

/// Reads it for somebody who waits for long: a single reply may go missing.
Json readSurveyPatiently(Session& session) {
  constexpr int kMostFailures = 3;
  for (int failures = 1;; ++failures) {
    try {
      return readSurvey(session);
    } catch (const Failure& failure) {
      if (failure.status() != ExitStatus::NoReply || failures == kMostFailures) {
        throw;
      }
    }
  }
}

/// Where the receiver does not tell of its progress, a survey is over when its length has passed,
/// or another position is saved.
bool isOver(const Json& survey, const Json& atStart, std::chrono::seconds passed) {
  if (survey["mode"] != "auto") {
    return true;
  }
  return survey.contains("present_mode")
             ? survey["present_mode"] != "auto"
             : survey != atStart || passed.count() > survey["length"].get<long long>();
}

/// Asks once a second until the survey is over, and returns how it ended.
Json waitForEnd(Session& session, const Options& options) {
  const bool showsProgress = ::isatty(STDERR_FILENO) == 1 && !options.session.isQuiet;
  const auto start = std::chrono::steady_clock::now();
  const Json atStart = readSurvey(session);
  Json survey = atStart;
  const auto passed = [&] {
    return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() -
                                                            start);
  };
  while (!isOver(survey, atStart, passed())) {
    if (showsProgress) {
      complain(
          fmt::format("\r\033[K{}; waiting for {} s", describeSurvey(survey), passed().count()));
    }
    std::this_thread::sleep_for(std::chrono::seconds(1));
    survey = readSurveyPatiently(session);
  }
  if (showsProgress) {
    complain("\r\033[K");
  }
  return survey;
}

const Argument& ofStatic(const char* argument) { return argumentOf("setSurveyStatic", argument); }
const Argument& surveyLength() { return argumentOf("setSurveyAuto", "surveyLength"); }

}  // namespace

void addSurveyCommand(CLI::App& app, Action& chosen) {
  const auto isWaiting = std::make_shared<bool>(false);
  const auto position = std::make_shared<Position>();
  const auto seconds = std::make_shared<long long>(10800);

  const auto finish = [=](Session& session, const Options& options) {
    showSurvey(options, *isWaiting ? waitForEnd(session, options) : readSurvey(session));
  };
  CLI::App* const survey =
      addCommand(app, "survey", "Surveys the position, holds one, or navigates", chosen, finish);
  const auto addWait = [=](CLI::App& command) {
    command.add_flag("--wait", *isWaiting, "Waits until the survey is over, beyond any deadline");
  };
  addWait(*survey);

  addWait(*addCommand(*survey, "status", "What the receiver does, and where", chosen, finish));
  addCommand(*survey, "dynamic", "Navigates, without a survey", chosen,
             [=](Session& session, const Options& options) {
               session.call("setSurveyDynamic");
               finish(session, options);
             });
  CLI::App* command = addCommand(
      *survey, "auto",
      "Surveys the position. How far it may vary cannot be set: the receiver keeps its own", chosen,
      [=](Session& session, const Options& options) {
        requireWithin(surveyLength(), "SECONDS", static_cast<double>(*seconds));
        session.call("setSurveyAuto", {*seconds, kDeviation});
        finish(session, options);
      });
  addWait(*command);
  command
      ->add_option("SECONDS", *seconds,
                   rangeOf(surveyLength()) + "; three hours where none are given")
      ->check([](const std::string& text) {
        const bool isNumber = text.find_first_not_of("0123456789") == std::string::npos;
        return isNumber ? "" : fmt::format("seconds, as a number: 7200, not {}", text);
      });

  command = addCommand(*survey, "static", "Holds this position", chosen,
                       [=](Session& session, const Options& options) {
                         requireWithin(ofStatic("latitude"), "LAT", position->latitude);
                         requireWithin(ofStatic("longitude"), "LON", position->longitude);
                         requireWithin(ofStatic("altitude"), "ALT", position->altitude);
                         session.call("setSurveyStatic", {position->latitude, position->longitude,
                                                          position->altitude, kDeviation});
                         finish(session, options);
                       });
  command->add_option("LAT", position->latitude, "Latitude, " + rangeOf(ofStatic("latitude")))
      ->required();
  command->add_option("LON", position->longitude, "Longitude, " + rangeOf(ofStatic("longitude")))
      ->required();
  command->add_option("ALT", position->altitude, "Altitude, " + rangeOf(ofStatic("altitude")))
      ->required();
}

}  // namespace orb::ctl
