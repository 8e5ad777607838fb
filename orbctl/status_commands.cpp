#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "orb-gnss/hardware_discovery.h"
#include "orbctl/command.h"
#include "orbctl/failure.h"
#include "orbctl/list_reader.h"
#include "orbctl/navigation.h"

namespace orb::ctl {
namespace {

std::string text(const Json& data, const char* key) { return data.at(key).get<std::string>(); }

Json readInfo(Session& session) {
  const Values texts =
      session.call("gpsOrbGetFwVersion", {std::string(), std::string(), std::string()});
  const auto value = [&](std::size_t i) {
    const auto& whole = std::get<std::string>(texts[i]);
    return whole.substr(whole.find(": ") + 2);
  };
  return {{"kernel", value(0)}, {"odm", value(1)}, {"revision", value(2)}};
}

std::string describe(const Json& position) {
  if (text(position, "fix") == "NO-FIX") {
    return "no fix";
  }
  return fmt::format(
      "{:.7f} degrees, {:.7f} degrees, {:.2f} m above sea level ({:.2f} m above the "
      "ellipsoid)",
      position["latitude"].get<double>(), position["longitude"].get<double>(),
      position["sea_level_altitude"].get<double>(), position["ellipsoid_altitude"].get<double>());
}

std::string line(const char* name, const std::string& what) {
  return fmt::format("{:<13} {}\n", name, what);
}

std::string firmwareLines(const Json& firmware) {
  return line("receiver", fmt::format("QN4470T01, kernel {}, revision {}", text(firmware, "kernel"),
                                      text(firmware, "revision")));
}

std::string navigationLines(const Json& navigation) {
  return line("fix", fmt::format("{}, {} satellites", text(navigation, "fix"),
                                 navigation["satellites"].get<int>())) +
         line("position", describe(navigation));
}

void detect(Session& session, const Options& options) {
  session.requireReceiver();
  show(options, "detect", {{"receiver", true}},
       "A receiver QN4470T01 is fitted and answers on /dev/tty_gps.\n");
}

void info(Session& session, const Options& options) {
  const Json data = readInfo(session);
  show(options, "info", data,
       fmt::format("kernel    {}\nodm       {}\nrevision  {}\n", text(data, "kernel"),
                   text(data, "odm"), text(data, "revision")));
}

void time(Session& session, const Options& options) {
  const Json data = readTime(session);
  show(options, "time", data, describeTime(data) + "\n");
}

void position(Session& session, const Options& options) {
  const Json data = readNavigation(session);
  show(options, "position", data, fmt::format("{}: {}\n", text(data, "fix"), describe(data)));
}

void satellites(Session& session, const Options& options) {
  const Json navigation = readNavigation(session);
  const Json data{{"in_fix", navigation["satellites"]}, {"fix", navigation["fix"]}};
  show(
      options, "satellites", data,
      fmt::format("{} satellites in the fix ({})\n", data["in_fix"].get<int>(), text(data, "fix")));
}

void interference(Session& session, const Options& options) {
  const Json data = readInterference(session);
  show(options, "interference", data, describeInterference(data) + "\n");
}

}  // namespace

void showStatus(Session& session, const Options& options) {
  // What is read, how, and what is said of it.
  const struct {
    const char* name;
    Json (*read)(Session& session);
    std::string (*describe)(const Json& data);
  } parts[] = {
      {"firmware", readInfo, firmwareLines},
      {"navigation", readNavigation, navigationLines},
      {"time", readTime, [](const Json& time) { return line("time", describeTime(time)); }},
      {"survey", readSurvey,
       [](const Json& survey) { return line("survey", describeSurvey(survey)); }},
      {"interference", readInterference, [](const Json& interference) {
         return line("interference", describeInterference(interference));
       }}};
  ListReader reader(session);
  Json data = Json::object();
  std::string text;
  for (const auto& part : parts) {
    if (const Json found = reader.read(part.name, part.read); !found.is_null()) {
      data[part.name] = found;
      text += part.describe(found);
    }
  }
  reader.show(options, "status", "status_found", data, text);
}

void addStatusCommands(CLI::App& app, Action& chosen) {
  addCommand(app, "status", "Firmware, fix, position, time, survey and interference at a glance",
             chosen, showStatus);
  addCommand(app, "detect", "Whether the module is fitted and its receiver answers", chosen,
             detect);
  addCommand(app, "info", "The firmware's versions", chosen, info);
  addCommand(app, "time", "The receiver's time", chosen, time);
  addCommand(app, "position", "Fix and position", chosen, position);
  addCommand(app, "satellites", "The number of satellites in the fix", chosen, satellites);
  addCommand(app, "interference", "Interference: whether it is looked for, and how much there is",
             chosen, interference);
}

}  // namespace orb::ctl
