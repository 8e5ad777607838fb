#include "base/man_page.h"

#include <cctype>

namespace orb {
namespace {

/// Text as mdoc takes it: a line must not start with a dot or an apostrophe.
std::string escaped(const std::string& text) {
  std::string result;
  bool isLineStart = true;
  for (const char c : text) {
    if (isLineStart && (c == '.' || c == '\'')) {
      result += "\\&";
    }
    if (c == '\\') {
      result += "\\e";
    } else if (c == '-') {
      result += "\\-";
    } else {
      result += c;
    }
    isLineStart = c == '\n';
  }
  return result;
}

/// Text in lines that mandoc does not find long.
std::string wrapped(const std::string& text) {
  constexpr std::size_t kWidth = 76;
  std::string result;
  std::size_t lineStart = 0;
  for (const char c : text) {
    const bool isBlank = c == ' ' || c == '\n';
    if (isBlank && (c == '\n' || result.size() - lineStart > kWidth - 16)) {
      result += '\n';
      lineStart = result.size();
    } else {
      result += c;
    }
  }
  return escaped(result);
}

/// A paragraph for the page: new lines of the text are kept.
std::string literal(const std::string& text) {
  return ".Bd -literal\n" + escaped(text) + "\n.Ed\n";
}

std::string optionsOf(const CLI::App& app) {
  std::string items;
  for (const CLI::Option* const option : app.get_options()) {
    std::string name = option->get_name(true, true);
    if (option->nonpositional() && option->get_type_size() != 0 &&
        !option->get_type_name().empty()) {
      name += " " + option->get_type_name();
    }
    while (!name.empty() && name.back() == ' ') {
      name.pop_back();
    }
    items += ".It " + escaped(name) + "\n" + wrapped(option->get_description()) + "\n";
  }
  return items.empty() ? "" : ".Bl -tag -width Ds\n" + items + ".El\n";
}

std::string upper(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return text;
}

void addCommands(std::string& text, const CLI::App& app, const std::string& before) {
  for (const CLI::App* const command : app.get_subcommands({})) {
    const std::string name = before + command->get_name();
    text += ".Ss " + escaped(name) + "\n" + wrapped(command->get_description()) + "\n" +
            optionsOf(*command);
    addCommands(text, *command, name + " ");
  }
}

}  // namespace

std::string manPage(const ManPage& page, const CLI::App& app) {
  const std::string description = app.get_description();
  std::string what = description.substr(0, description.find_first_of(".\n"));
  what[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(what[0])));
  std::string text = ".Dd $Mdocdate$\n.Dt " + upper(page.name) + " " +
                     std::to_string(page.section) + "\n.Os orb-gnss " + page.version +
                     "\n.Sh NAME\n.Nm " + page.name + "\n.Nd " + escaped(what) +
                     "\n.Sh SYNOPSIS\n.Nm\n.Op Ar OPTIONS\n";
  std::string commands;
  addCommands(commands, app, "");
  if (!commands.empty()) {
    text += ".Op Ar COMMAND ...\n";
  }
  text += ".Sh DESCRIPTION\n" + wrapped(description) + "\n.Pp\nThe options are:\n" + optionsOf(app);
  if (!commands.empty()) {
    text += ".Sh COMMANDS\n" + commands;
  }
  text += page.more;
  if (!app.get_footer().empty()) {
    text += ".Sh NOTES\n" + literal(app.get_footer());
  }
  return text;
}

}  // namespace orb
