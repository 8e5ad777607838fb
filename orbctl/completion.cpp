#include "orbctl/completion.h"

#include <fmt/format.h>

#include <algorithm>

#include "orbctl/settings.h"

namespace orb::ctl {
namespace {

/// What can come after a command: options, commands of its own, fixed words, keys.
struct Words {
  std::string command;
  std::string words;
};

std::string optionsOf(const CLI::App& app) {
  std::string words;
  for (const CLI::Option* const option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      words += " --" + name;
    }
  }
  return words;
}

std::string namesOf(const CLI::App& app) {
  std::string words;
  for (const CLI::App* const command : app.get_subcommands({})) {
    words += " " + command->get_name();
  }
  return words;
}

std::string keys() {
  std::string words;
  for (const Setting& setting : settings()) {
    words += " " + std::string(setting.key);
  }
  return words;
}

/// The fixed words that a command's argument takes.
std::string argumentsOf(const std::string& command) {
  if (command == "get" || command == "set" || command == "keys") {
    return keys();
  }
  if (command == "antenna-power") {
    return " on off";
  }
  if (command == "defaults") {
    return " application configuration factory";
  }
  if (command == "reset") {
    return " hot warm cold";
  }
  return command == "completion" ? " bash zsh fish" : "";
}

std::vector<Words> wordsOf(const CLI::App& app) {
  std::vector<Words> result;
  for (const CLI::App* const command : app.get_subcommands({})) {
    const std::string& name = command->get_name();
    result.push_back({name, namesOf(*command) + argumentsOf(name) + optionsOf(*command)});
  }
  return result;
}

/// The words that a setting takes, for completion of its value.
std::string valuesOf(const Setting& setting) {
  if (setting.kind == Setting::Kind::Switch) {
    return "on off";
  }
  std::string words(setting.words);
  std::replace(words.begin(), words.end(), ',', ' ');
  return words;
}

/// The names of the same things in two shells.
struct ShellNames {
  const char* first;  // the index of the first word after the program
  const char* index;  // the index of the word that is completed
  const char* array;  // the words, to be indexed
};

/// Shell code that sets `list` to what can stand where the cursor is.
std::string findWords(const CLI::App& app, const ShellNames& shell) {
  std::string names;
  for (const Words& each : wordsOf(app)) {
    names += (names.empty() ? "" : "|") + each.command;
  }
  std::string text = fmt::format(
      "  local command= list i\n"
      "  for ((i = {0}; i < {1}; i++)); do\n"
      "    case ${{{2}[i]}} in {3}) command=${{{2}[i]}}; break ;; esac\n"
      "  done\n"
      "  case $command in\n",
      shell.first, shell.index, shell.array, names);
  for (const Words& each : wordsOf(app)) {
    text += fmt::format("    {}) list=\"{}\" ;;\n", each.command, each.words);
  }
  text += fmt::format("    *) list=\"{}{}\" ;;\n  esac\n", namesOf(app), optionsOf(app));
  text +=
      fmt::format("  [ \"$command\" = set ] && case ${{{}[{}-1]}} in\n", shell.array, shell.index);
  for (const Setting& setting : settings()) {
    if (const std::string values = valuesOf(setting); !values.empty()) {
      text += fmt::format("    {}) list=\"{}\" ;;\n", setting.key, values);
    }
  }
  return text + "  esac\n";
}

std::string bash(const CLI::App& app) {
  return "_orbctl() {\n" + findWords(app, {"1", "COMP_CWORD", "COMP_WORDS"}) +
         "  COMPREPLY=($(compgen -W \"$list\" -- \"${COMP_WORDS[COMP_CWORD]}\"))\n"
         "}\n"
         "complete -F _orbctl orbctl\n";
}

/// As a function that zsh loads by itself, and as a script that is sourced.
std::string zsh(const CLI::App& app) {
  return "#compdef orbctl\n_orbctl() {\n" + findWords(app, {"2", "CURRENT", "words"}) +
         "  compadd -- ${=list}\n"
         "}\n"
         "if [ \"$funcstack[1]\" = _orbctl ]; then\n"
         "  _orbctl \"$@\"\n"
         "else\n"
         "  compdef _orbctl orbctl\n"
         "fi\n";
}

std::string fish(const CLI::App& app) {
  std::string text = "complete -c orbctl -f\n";
  std::string names;
  for (const CLI::App* const command : app.get_subcommands({})) {
    names += (names.empty() ? "" : " ") + command->get_name();
  }
  for (const CLI::App* const command : app.get_subcommands({})) {
    text +=
        fmt::format("complete -c orbctl -n 'not __fish_seen_subcommand_from {}' -a {} -d '{}'\n",
                    names, command->get_name(), command->get_description());
  }
  for (const Words& each : wordsOf(app)) {
    text += fmt::format("complete -c orbctl -n '__fish_seen_subcommand_from {}' -a '{}'\n",
                        each.command, each.words.empty() ? "" : each.words.substr(1));
  }
  text +=
      fmt::format("complete -c orbctl -a '{}' -n 'string match -q -- \"-*\" (commandline -ct)'\n",
                  optionsOf(app).substr(1));
  for (const Setting& setting : settings()) {
    if (const std::string values = valuesOf(setting); !values.empty()) {
      text += fmt::format(
          "complete -c orbctl -n '__fish_seen_subcommand_from set; and test (commandline -opc)[-1] "
          "= {}' -a '{}'\n",
          setting.key, values);
    }
  }
  return text;
}

}  // namespace

std::string completion(const std::string& shell, const CLI::App& app) {
  return shell == "bash" ? bash(app) : shell == "zsh" ? zsh(app) : fish(app);
}

}  // namespace orb::ctl
