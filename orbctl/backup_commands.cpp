#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <fstream>
#include <memory>

#include "orbctl/backup.h"
#include "orbctl/change.h"
#include "orbctl/command.h"
#include "orbctl/failure.h"
#include "orbctl/setting_values.h"

namespace orb::ctl {
namespace {

void backup(Session& session, const Options& options, const std::string& file) {
  session.requireReceiver();
  const std::string text = makeBackup(session);
  if (file == kStandardStream) {
    show(options, "backup", {{"file", file}, {"text", text}}, text);
    return;
  }
  std::ofstream stream(file, std::ios::trunc);
  if (!(stream << text).flush()) {
    throw Failure(ExitStatus::WrongUse, fmt::format("cannot write {}", file));
  }
  show(options, "backup", {{"file", file}}, fmt::format("All settings are in {}.\n", file));
}

/// How the receiver differs from a backup.
struct Difference {
  std::vector<Change> changes;
  bool isOfSurvey = false;
  std::string text;
  Json data = Json::object();
};

Difference differenceFrom(Session& session, const Backup& wanted) {
  Difference difference;
  for (const auto& [key, value] : wanted.settings) {
    const Setting& setting = settingNamed(key);
    const Json before = setting.isReadable() ? setting.read(session) : Json();
    if (before != value) {
      difference.changes.push_back({&setting, value});
      difference.data[key] = {{"old", before}, {"new", value}};
      difference.text +=
          fmt::format("{:<23} {} -> {}\n", key, textOf(before), withUnit(setting, value));
    }
  }
  difference.isOfSurvey = !isSurveyAsIn(session, wanted);
  if (difference.isOfSurvey) {
    difference.data["survey"] = wanted.survey;
    difference.text += fmt::format("{:<23} -> {}\n", "survey", wanted.survey.dump());
  }
  return difference;
}

void apply(Session& session, const Backup& wanted, const Difference& difference) {
  for (const Change& wish : difference.changes) {
    change(session, wish, false);
  }
  if (difference.isOfSurvey) {
    restoreSurvey(session, wanted);
    if (!isSurveyAsIn(session, wanted)) {
      throw Failure(ExitStatus::Refused, "the survey was set, and reads back differently",
                    "see it with: orbctl survey");
    }
  }
}

void restore(Session& session, const Options& options, const std::string& file, bool isDry) {
  const Backup wanted = readBackup(file);
  session.requireReceiver();
  const Difference difference = differenceFrom(session, wanted);
  const bool isSame = difference.text.empty();
  if (!options.isJson) {
    show(options, "restore", {},
         isSame ? "The receiver holds all of it already.\n" : difference.text);
  }
  if (!isDry) {
    apply(session, wanted, difference);
  }
  if (options.isJson) {
    show(options, "restore", {{"dry_run", isDry}, {"settings", difference.data}}, "");
  } else if (!isDry && !isSame) {
    show(options, "restore", {}, "Restored, and read back.\n");
  }
}

}  // namespace

void addBackupCommands(CLI::App& app, Action& chosen) {
  const auto isDry = std::make_shared<bool>(false);
  const auto file = std::make_shared<std::string>();

  CLI::App* command = addCommand(
      app, "backup", "Writes all settings to a file", chosen,
      [=](Session& session, const Options& options) { backup(session, options, *file); });
  command->add_option("FILE", *file, "A TOML file; - is standard output")->required();

  command = addCommand(
      app, "restore", "Shows how the settings differ from a file, sets and verifies them", chosen,
      [=](Session& session, const Options& options) { restore(session, options, *file, *isDry); });
  command->add_option("FILE", *file, "As orbctl backup has written it; - is standard input")
      ->required();
  command->add_flag("--dry-run", *isDry, "Shows the difference, and changes nothing");
}

}  // namespace orb::ctl
