#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <thread>

#include "orbctl/argument.h"
#include "orbctl/command.h"
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
  const std::string mode = survey["mode"].get<std::string>();
  std::string text = mode + "\n";
  if (mode == "auto") {
    text = fmt::format("auto, for {} s\n", survey["length"].get<long long>());
  } else if (mode == "static") {
    text = fmt::format("static at {:.7f} degrees, {:.7f} degrees, {:.2f} m\n",
                       survey["latitude"].get<double>(), survey["longitude"].get<double>(),
                       survey["altitude"].get<double>());
  }
  show(options, "survey", survey, text);
}

/// Asks once a second until the survey is over: the receiver names another mode or saves another
/// position, or the survey's length has passed.
void waitForEnd(Session& session, const Options& options) {
  const bool showsProgress = ::isatty(STDERR_FILENO) == 1 && !options.session.isQuiet;
  const auto start = std::chrono::steady_clock::now();
  const Json atStart = readSurvey(session);
  const auto length = std::chrono::seconds(atStart["length"].get<long long>());
  bool isOver = atStart["mode"] != "auto";
  while (!isOver) {
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const auto passed =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start);
    if (showsProgress) {
      fmt::print(stderr, "\r\033[Ksurveying for {} s of {} s", passed.count(), length.count());
    }
    isOver = passed > length || readSurvey(session) != atStart;
  }
  if (showsProgress) {
    fmt::print(stderr, "\r\033[K");
  }
}

const Argument& ofStatic(const char* argument) { return argumentOf("setSurveyStatic", argument); }
const Argument& surveyLength() { return argumentOf("setSurveyAuto", "surveyLength"); }

}  // namespace

void addSurveyCommand(CLI::App& app, Action& chosen) {
  const auto isWaiting = std::make_shared<bool>(false);
  const auto position = std::make_shared<Position>();
  const auto seconds = std::make_shared<long long>(10800);

  const auto finish = [=](Session& session, const Options& options) {
    if (*isWaiting) {
      waitForEnd(session, options);
    }
    showSurvey(options, readSurvey(session));
  };
  CLI::App* const survey =
      addCommand(app, "survey", "Surveys the position, holds one, or navigates", chosen, finish);
  survey->add_flag("--wait", *isWaiting, "Waits until the survey is done");

  addCommand(*survey, "status", "What the receiver does, and where", chosen, finish);
  addCommand(*survey, "dynamic", "Navigates, without a survey", chosen,
             [=](Session& session, const Options& options) {
               session.call("setSurveyDynamic");
               finish(session, options);
             });
  CLI::App* command =
      addCommand(*survey, "auto", "Surveys the position", chosen,
                 [=](Session& session, const Options& options) {
                   requireWithin(surveyLength(), "SECONDS", static_cast<double>(*seconds));
                   session.call("setSurveyAuto", {*seconds, kDeviation});
                   finish(session, options);
                 });
  command->add_option("SECONDS", *seconds,
                      rangeOf(surveyLength()) + "; three hours where none are given");

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
