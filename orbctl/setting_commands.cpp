#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>

#include "orbctl/backup.h"
#include "orbctl/command.h"
#include "orbctl/failure.h"

namespace orb::ctl {
namespace {

std::string withUnit(const Setting& setting, const Json& value) {
  return fmt::format("{}{}{}", textOf(value), setting.unit.empty() ? "" : " ", setting.unit);
}

const Setting& readable(const std::string& key) {
  const Setting& setting = settingNamed(key);
  if (!setting.isReadable()) {
    throw Failure(ExitStatus::WrongUse, fmt::format("{} cannot be read: no query tells it", key),
                  "orbctl doctor tells what arrives on the line");
  }
  return setting;
}

void get(Session& session, const Options& options, const std::string& command,
         const std::vector<std::string>& keys) {
  std::vector<const Setting*> asked;
  for (const std::string& key : keys) {
    asked.push_back(&readable(key));
  }
  Json data = Json::object();
  std::string text;
  for (const Setting* const setting : asked) {
    const Json value = setting->read(session);
    data[std::string(setting->key)] = value;
    text += keys.size() == 1 ? withUnit(*setting, value) + "\n"
                             : fmt::format("{:<23} {}\n", setting->key, withUnit(*setting, value));
  }
  show(options, command, data, text);
}

struct Change {
  const Setting* setting;
  Json value;
};

/// Pairs of key and value; all are checked before anything is sent.
std::vector<Change> changesFrom(const std::vector<std::string>& words) {
  std::vector<Change> changes;
  for (std::size_t i = 0; i < words.size(); i += 2) {
    const Setting& setting = settingNamed(words[i]);
    if (i + 1 == words.size()) {
      throw Failure(ExitStatus::WrongUse,
                    fmt::format("{} needs a value: {}", words[i], rangeOf(setting)));
    }
    changes.push_back({&setting, valueFrom(setting, words[i + 1])});
  }
  return changes;
}

/// What became of one setting, in words and as data.
std::pair<std::string, Json> change(Session& session, const Change& wanted, bool isDry) {
  const Setting& setting = *wanted.setting;
  const Json before = setting.isReadable() ? setting.read(session) : Json();
  Json data{{"old", before}, {"new", wanted.value}, {"changed", before != wanted.value}};
  const std::string arrow = setting.isReadable() ? fmt::format("{} -> {}", textOf(before),
                                                               withUnit(setting, wanted.value))
                                                 : withUnit(setting, wanted.value);
  if (before == wanted.value) {
    return {fmt::format("{}: {} already\n", setting.key, withUnit(setting, before)), data};
  }
  if (isDry) {
    return {fmt::format("{}: would set {}\n", setting.key, arrow), data};
  }
  setting.write(session, wanted.value);
  if (setting.isReadable()) {
    data["new"] = setting.read(session);
    if (data["new"] != wanted.value) {
      throw Failure(ExitStatus::Refused,
                    fmt::format("{}: set to {}, but the receiver keeps {}", setting.key,
                                withUnit(setting, wanted.value), withUnit(setting, data["new"])),
                    "the receiver refuses this value in its present state");
    }
  }
  return {fmt::format("{}: {}\n", setting.key, arrow), data};
}

void apply(Session& session, const Options& options, const std::string& command,
           const std::vector<Change>& changes, bool isDry) {
  session.requireReceiver();
  Json data = Json::object();
  for (const Change& wanted : changes) {
    const auto [text, outcome] = change(session, wanted, isDry);
    data[std::string(wanted.setting->key)] = outcome;
    if (!options.isJson) {
      show(options, command, {}, text);  // at once: a later one may fail
    }
  }
  if (options.isJson) {
    show(options, command, {{"dry_run", isDry}, {"settings", data}}, "");
  }
}

void keys(Session& session, const Options& options, const std::vector<std::string>& asked,
          bool withValues) {
  Json data = Json::object();
  std::string text;
  for (const Setting& setting : settings()) {
    const std::string key(setting.key);
    if (!asked.empty() && std::find(asked.begin(), asked.end(), key) == asked.end()) {
      continue;
    }
    Json row{{"what", setting.what},
             {"range", rangeOf(setting)},
             {"unit", setting.unit},
             {"reads", setting.reads},
             {"writes", setting.writes}};
    text += fmt::format("{:<23} {}\n{:24}{}\n", key, setting.what, "", rangeOf(setting));
    if (withValues && setting.isReadable()) {
      row["value"] = readOrWarn(setting, session);
      text += row["value"].is_null()
                  ? ""
                  : fmt::format("{:24}now {}\n", "", withUnit(setting, row["value"]));
    }
    text += setting.isReadable() ? fmt::format("{:24}{}, {}\n", "", setting.reads, setting.writes)
                                 : fmt::format("{:24}{}\n", "", setting.writes);
    data[key] = std::move(row);
  }
  show(options, "keys", data, text);
}

void backup(Session& session, const Options& options, const std::string& file) {
  session.requireReceiver();
  const std::string text = makeBackup(session);
  if (file == "-") {
    std::cout << text;
    return;
  }
  std::ofstream stream(file, std::ios::trunc);
  if (!(stream << text).flush()) {
    throw Failure(ExitStatus::WrongUse, fmt::format("cannot write {}", file));
  }
  show(options, "backup", {{"file", file}}, fmt::format("All settings are in {}.\n", file));
}

void restore(Session& session, const Options& options, const std::string& file, bool isDry) {
  const Backup wanted = readBackup(file);
  std::vector<Change> changes;
  for (const auto& [key, value] : wanted.settings) {
    changes.push_back({&settingNamed(key), value});
  }
  session.requireReceiver();
  Json data = Json::object();
  std::string difference;
  std::vector<Change> open;
  for (const Change& wish : changes) {
    const Json before = wish.setting->isReadable() ? wish.setting->read(session) : Json();
    if (before != wish.value) {
      data[std::string(wish.setting->key)] = {{"old", before}, {"new", wish.value}};
      difference += fmt::format("{:<23} {} -> {}\n", wish.setting->key, textOf(before),
                                withUnit(*wish.setting, wish.value));
      open.push_back(wish);
    }
  }
  const bool surveyDiffers = !isSurveyAsIn(session, wanted);
  if (surveyDiffers) {
    data["survey"] = wanted.survey;
    difference += fmt::format("{:<23} -> {}\n", "survey", wanted.survey.dump());
  }
  if (!options.isJson) {
    show(options, "restore", {},
         difference.empty() ? "The receiver holds all of it already.\n" : difference);
  }
  if (!isDry) {
    for (const Change& wish : open) {
      change(session, wish, false);
    }
    if (surveyDiffers) {
      restoreSurvey(session, wanted);
      if (!isSurveyAsIn(session, wanted)) {
        throw Failure(ExitStatus::Refused, "the survey was set, and reads back differently",
                      "see it with: orbctl survey");
      }
    }
  }
  if (options.isJson) {
    show(options, "restore", {{"dry_run", isDry}, {"settings", data}}, "");
  } else if (!isDry && !difference.empty()) {
    show(options, "restore", {}, "Restored, and read back.\n");
  }
}

void addGroup(CLI::App& app, Action& chosen, const char* name, const char* description,
              const std::vector<std::string>& keys) {
  addCommand(app, name, description, chosen,
             [=](Session& session, const Options& options) { get(session, options, name, keys); });
}

}  // namespace

void addSettingCommands(CLI::App& app, Action& chosen) {
  const auto words = std::make_shared<std::vector<std::string>>();
  const auto flag = std::make_shared<bool>(false);
  const auto file = std::make_shared<std::string>();

  CLI::App* command = addCommand(
      app, "get", "Reads settings: orbctl get elevation-limit cnr-limit", chosen,
      [=](Session& session, const Options& options) { get(session, options, "get", *words); });
  command->add_option("KEY", *words, "What to read; orbctl keys lists all")->required();

  command = addCommand(app, "set", "Changes settings: orbctl set elevation-limit 15 sbas off",
                       chosen, [=](Session& session, const Options& options) {
                         apply(session, options, "set", changesFrom(*words), *flag);
                       });
  command->add_option("KEY VALUE", *words, "What to set, and to what")->required();
  command->add_flag("--dry-run", *flag, "Says what would change, and changes nothing");

  command = addCommand(app, "keys", "Lists all settings with unit, range and operations", chosen,
                       [=](Session& session, const Options& options) {
                         for (const std::string& key : *words) {
                           settingNamed(key);
                         }
                         keys(session, options, *words, *flag);
                       });
  command->add_option("KEY", *words, "These alone");
  command->add_flag("--values", *flag, "Reads their present values too");

  addGroup(app, chosen, "pulse", "The pulse outputs and what they are aligned to",
           {"pulse-width", "pps-mode", "time-reference", "antenna-delay", "frequency-output"});
  addGroup(app, chosen, "constellations", "The satellite systems in use",
           {"constellations", "sbas", "qzss", "second-band"});
  addGroup(app, chosen, "masks", "What satellites and fixes have to be",
           {"elevation-limit", "cnr-limit", "dop-mask", "fix-mode"});

  command = addCommand(
      app, "backup", "Writes all settings to a file", chosen,
      [=](Session& session, const Options& options) { backup(session, options, *file); });
  command->add_option("FILE", *file, "A TOML file; - is standard output")->required();

  command = addCommand(
      app, "restore", "Shows how the settings differ from a file, sets and verifies them", chosen,
      [=](Session& session, const Options& options) { restore(session, options, *file, *flag); });
  command->add_option("FILE", *file, "As orbctl backup has written it")->required();
  command->add_flag("--dry-run", *flag, "Shows the difference, and changes nothing");
}

}  // namespace orb::ctl
