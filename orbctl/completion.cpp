#include "orbctl/completion.h"

#include <fmt/format.h>

#include <algorithm>

#include "operation_table/operation.h"
#include "orbctl/settings.h"

namespace orb::ctl {
namespace {

/// What can come after a command.
struct Words {
  std::string command;
  std::string words;
  std::string options;
};

/// The options that --help tells of; --help itself as one of orbctl alone.
std::vector<const CLI::Option*> optionsOf(const CLI::App& app) {
  return app.get_options([&](const CLI::Option* option) {
    const bool isHelpOfCommand = option == app.get_help_ptr() && app.get_parent() != nullptr;
    return option->nonpositional() && !option->get_group().empty() && !isHelpOfCommand;
  });
}

std::string optionNamesOf(const CLI::App& app) {
  std::string words;
  for (const CLI::Option* const option : optionsOf(app)) {
    words += " --" + option->get_lnames().front();
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

std::string separatedByBlanks(std::string_view list) {
  std::string words(list);
  std::replace(words.begin(), words.end(), ',', ' ');
  return words;
}

std::string keys() {
  std::string words;
  for (const Setting& setting : settings()) {
    words += " " + std::string(setting.key);
  }
  return words;
}

std::string operationNames() {
  std::string words;
  for (const Operation& operation : operations()) {
    words += " " + std::string(operation.name);
  }
  return words;
}

/// The words that a command's arguments can be: keys, operations, commands, or what the parser
/// takes.
std::string argumentsOf(const CLI::App& command) {
  std::string words;
  for (const CLI::Option* const option : command.get_options()) {
    const std::string name = option->get_name(true);
    if (name == "KEY") {
      words += keys();
    } else if (name == "OPERATION") {
      words += operationNames();
    } else if (name == "COMMAND") {
      words += namesOf(*command.get_parent());
    } else if (option->get_positional()) {
      const std::string type = option->get_type_name();  // such as "TEXT:{on,off}"
      const std::size_t start = type.find('{');
      words += start == std::string::npos
                   ? ""
                   : " " + separatedByBlanks(type.substr(start + 1, type.find('}') - start - 1));
    }
  }
  return words;
}

std::vector<Words> wordsOf(const CLI::App& app) {
  std::vector<Words> result;
  for (const CLI::App* const command : app.get_subcommands({})) {
    result.push_back(
        {command->get_name(), namesOf(*command) + argumentsOf(*command), optionNamesOf(*command)});
  }
  return result;
}

/// The words that a setting takes, for completion of its value.
std::string valuesOf(const Setting& setting) {
  return setting.kind == Setting::Kind::Switch ? "on off" : separatedByBlanks(setting.words);
}

/// The names of the same things in two shells.
struct ShellNames {
  const char* first;  // the index of the first word after the program
  const char* index;  // the index of the word that is completed
  const char* array;  // the words, to be indexed
};

/// Shell code that sets `list` to what can stand where the cursor is; empty: files.
std::string findWords(const CLI::App& app, const ShellNames& shell) {
  std::string names;
  for (const Words& each : wordsOf(app)) {
    names += (names.empty() ? "" : "|") + each.command;
  }
  std::string text = fmt::format(
      "  local command= list options i\n"
      "  for ((i = {0}; i < {1}; i++)); do\n"
      "    case ${{{2}[i]}} in {3}) command=${{{2}[i]}}; break ;; esac\n"
      "  done\n"
      "  case $command in\n",
      shell.first, shell.index, shell.array, names);
  for (const Words& each : wordsOf(app)) {
    text += fmt::format("    {}) list=\"{}\" options=\"{}\" ;;\n", each.command, each.words,
                        each.options);
  }
  text += fmt::format("    *) list=\"{}\" ;;\n  esac\n", namesOf(app));
  text +=
      fmt::format("  [ \"$command\" = set ] && case ${{{}[{}-1]}} in\n", shell.array, shell.index);
  for (const Setting& setting : settings()) {
    if (const std::string values = valuesOf(setting); !values.empty()) {
      text += fmt::format("    {}) list=\"{}\" ;;\n", setting.key, values);
    }
  }
  return text + fmt::format("  esac\n  case ${{{}[{}]}} in -*) list=\"$options{}\" ;; esac\n",
                            shell.array, shell.index, optionNamesOf(app));
}

std::string bash(const CLI::App& app) {
  return "_orbctl() {\n" + findWords(app, {"1", "COMP_CWORD", "COMP_WORDS"}) +
         "  COMPREPLY=($(compgen -W \"$list\" -- \"${COMP_WORDS[COMP_CWORD]}\"))\n"
         "}\n"
         "complete -o default -F _orbctl orbctl\n";
}

/// As a function that zsh loads by itself, and as a script that is sourced.
std::string zsh(const CLI::App& app) {
  return "#compdef orbctl\n_orbctl() {\n" + findWords(app, {"2", "CURRENT", "words"}) +
         "  if [ -n \"$list\" ]; then\n"
         "    compadd -- ${=list}\n"
         "  else\n"
         "    _files\n"
         "  fi\n"
         "}\n"
         "if [ \"$funcstack[1]\" = _orbctl ]; then\n"
         "  _orbctl \"$@\"\n"
         "else\n"
         "  compdef _orbctl orbctl\n"
         "fi\n";
}

/// Text in single quotes, on one line.
std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') {
      result += '\\';
    }
    result += c == '\n' ? ' ' : c;
  }
  return result + "'";
}

/// A rule of fish: where `condition` holds, `what` is offered.
std::string rule(const std::string& condition, const std::string& what) {
  return "complete -c orbctl " + (condition.empty() ? "" : "-n " + quoted(condition) + " ") + what +
         "\n";
}

std::string optionRules(const CLI::App& app, const std::string& condition) {
  std::string text;
  for (const CLI::Option* const option : optionsOf(app)) {
    text += rule(condition,
                 "-l " + option->get_lnames().front() + " -d " + quoted(option->get_description()));
  }
  return text;
}

/// In fish 4.0.2, its own __fish_seen_subcommand_from takes `on` for the end of `completion`.
constexpr char kFishSeen[] = R"(function __orbctl_seen
  for word in (commandline -opc)[2..]
    contains -- $word $argv; and return
  end
  return 1
end
)";

std::string fish(const CLI::App& app) {
  const std::string seen = "__orbctl_seen ";
  const std::string previous = "(commandline -opc)[-1]";
  std::string valued;
  std::string text = kFishSeen + std::string("complete -c orbctl -f\n") + optionRules(app, "");
  for (const Setting& setting : settings()) {
    if (const std::string values = valuesOf(setting); !values.empty()) {
      valued += " " + std::string(setting.key);
      text += rule(fmt::format("{}set; and test {} = {}", seen, previous, setting.key),
                   "-a " + quoted(values));
    }
  }
  for (const CLI::App* const command : app.get_subcommands({})) {
    const std::string description = command->get_description();
    text += rule("not " + seen + namesOf(app),
                 "-a " + command->get_name() + " -d " +
                     quoted(description.substr(0, description.find('\n'))));
    text += optionRules(*command, seen + command->get_name());
  }
  for (const Words& each : wordsOf(app)) {
    const bool isSet = each.command == "set";
    text += rule(seen + each.command +
                     (isSet ? fmt::format("; and not contains -- {}{}", previous, valued) : ""),
                 "-a " + quoted(each.words));
  }
  return text + rule(seen + "backup restore", "-F");
}

}  // namespace

std::string completion(const std::string& shell, const CLI::App& app) {
  return shell == "bash" ? bash(app) : shell == "zsh" ? zsh(app) : fish(app);
}

}  // namespace orb::ctl
