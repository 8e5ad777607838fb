#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <optional>

#include "orbctl/change.h"
#include "orbctl/command.h"
#include "orbctl/failure.h"
#include "orbctl/list_reader.h"
#include "orbctl/setting_values.h"

namespace orb::ctl {
namespace {

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
  if (asked.size() == 1) {
    const Json value = asked.front()->read(session);
    show(options, command, {{std::string(keys.front()), value}},
         withUnit(*asked.front(), value) + "\n");
    return;
  }
  ListReader reader(session);
  Json data = Json::object();
  std::string text;
  for (const Setting* const setting : asked) {
    if (const Json value = reader.read(setting->key, setting->read); !value.is_null()) {
      data[std::string(setting->key)] = value;
      text += fmt::format("{:<23} {}\n", setting->key, withUnit(*setting, value));
    }
  }
  reader.show(options, command, "values", data, text);
}

void apply(Session& session, const Options& options, const std::string& command,
           const std::vector<Change>& changes, bool isDry) {
  session.requireReceiver();
  Json data = Json::object();
  makeEach(keysOf(changes), [&](std::size_t i) {
    const auto [text, outcome] = change(session, changes[i], isDry);
    data[std::string(changes[i].setting->key)] = outcome;
    if (!options.isJson) {
      show(options, command, {}, text);  // at once: a later one may fail
    }
    return !isDry && outcome["changed"].get<bool>();
  });
  if (options.isJson) {
    show(options, command, {{"dry_run", isDry}, {"settings", data}}, "");
  }
}

void keys(Session& session, const Options& options, const std::vector<std::string>& asked,
          bool withValues) {
  std::optional<ListReader> reader;
  if (withValues) {
    reader.emplace(session);
  }
  Json data = Json::object();
  std::string text;
  for (const Setting& setting : settings()) {
    const std::string key(setting.key);
    if (!asked.empty() && std::find(asked.begin(), asked.end(), key) == asked.end()) {
      continue;
    }
    Json row{{"what", setting.what},
             {"range", rangeOf(setting)},
             {"unit", unitOf(setting)},
             {"reads", setting.reads},
             {"writes", setting.writes}};
    text += fmt::format("{:<23} {}\n{:24}{}\n", key, setting.what, "", rangeOf(setting));
    if (reader && setting.isReadable()) {
      row["value"] = reader->read(setting.key, setting.read);
      text += row["value"].is_null()
                  ? ""
                  : fmt::format("{:24}now {}\n", "", withUnit(setting, row["value"]));
    }
    text += setting.isReadable() ? fmt::format("{:24}{}, {}\n", "", setting.reads, setting.writes)
                                 : fmt::format("{:24}{}\n", "", setting.writes);
    data[key] = std::move(row);
  }
  if (reader) {
    reader->show(options, "keys", "keys", data, text);
  } else {
    show(options, "keys", data, text);
  }
}

/// Settings that one command shows.
struct Group {
  const char* name;
  const char* description;
  std::vector<std::string> keys;
};

const std::vector<Group>& groups() {
  static const std::vector<Group> kGroups{
      {"pulse",
       "The pulse outputs and what they are aligned to",
       {"pulse-width", "pps-mode", "time-reference", "antenna-delay", "frequency-output"}},
      {"constellations",
       "The satellite systems in use",
       {"constellations", "sbas", "qzss", "second-band"}},
      {"masks",
       "What satellites and fixes have to be",
       {"elevation-limit", "cnr-limit", "dop-mask", "fix-mode"}}};
  return kGroups;
}

}  // namespace

bool isGroup(const std::string& command) {
  return std::any_of(groups().begin(), groups().end(),
                     [&](const Group& group) { return group.name == command; });
}

void addSettingCommands(CLI::App& app, Action& chosen) {
  const auto words = std::make_shared<std::vector<std::string>>();
  const auto flag = std::make_shared<bool>(false);

  CLI::App* command = addCommand(
      app, "get", "Reads settings: orbctl get elevation-limit cnr-limit", chosen,
      [=](Session& session, const Options& options) { get(session, options, "get", *words); });
  command->add_option("KEY", *words, "What to read; orbctl keys lists all")->required();

  command = addCommand(app, "set", "Changes settings: orbctl set elevation-limit 15 sbas off",
                       chosen, [=](Session& session, const Options& options) {
                         apply(session, options, "set", changesFrom(*words), *flag);
                       });
  command->add_option("KEY", *words, "Keys, each with its value after it")->required();
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

  for (const Group& group : groups()) {
    addCommand(app, group.name, group.description, chosen,
               [&group](Session& session, const Options& options) {
                 get(session, options, group.name, group.keys);
               });
  }
}

}  // namespace orb::ctl
