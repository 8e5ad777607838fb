#include "base/man_page.h"

#include <cctype>
#include <iostream>
#include <sstream>

#include "base/plain_help.h"

namespace orb {
namespace {

/// A line as mdoc takes it: it must not start with a dot or an apostrophe.
std::string escaped(const std::string& line) {
  std::string result = line.find_first_of(".'") == 0 ? "\\&" : "";
  for (const char c : line) {
    result += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
  }
  return result;
}

/// Text in lines that end where its own do.
std::string lines(const std::string& text, const std::string& emptyLine) {
  std::string result;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    result += (line.empty() ? emptyLine : escaped(line)) + "\n";
  }
  return result;
}

/// Text that man fills, with a new paragraph where it has an empty line. mdoc wants each sentence
/// on a line of its own.
std::string paragraphs(std::string text) {
  for (std::size_t at = 0; (at = text.find(". ", at)) != std::string::npos;) {
    text[++at] = '\n';
  }
  return lines(text, ".Pp");
}

std::string literal(const std::string& text) {
  return ".Bd -literal\n" + lines(text, "") + ".Ed\n";
}

std::string optionsOf(const CLI::App& app) {
  std::string items;
  for (const CLI::Option* const option : app.get_options()) {
    const std::string type = option->nonpositional() ? plainType(*option) : "";
    items += ".It " + escaped(option->get_name(true, true)) +
             (type.empty() ? "" : " Ar " + escaped(type)) + "\n" +
             paragraphs(option->get_description());
  }
  return items.empty() ? "" : ".Bl -tag -width Ds\n" + items + ".El\n";
}

std::string commandsOf(const CLI::App& app, const std::string& before) {
  std::string text;
  for (const CLI::App* const command : app.get_subcommands({})) {
    const std::string name = before + command->get_name();
    text += ".Ss " + escaped(name) + "\n" + paragraphs(command->get_description()) +
            optionsOf(*command) + commandsOf(*command, name + " ");
  }
  return text;
}

std::string upper(std::string text) {
  for (char& c : text) {
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return text;
}

std::string manPage(const CLI::App& app, int section) {
  const std::string& name = app.get_name();
  const std::string description = app.get_description();
  std::string purpose = description.substr(0, description.find_first_of(".\n"));
  purpose[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(purpose[0])));
  const std::string commands = commandsOf(app, "");
  return ".Dd $Mdocdate$\n.Dt " + upper(name) + " " + std::to_string(section) + "\n.Os " +
         app.version() + "\n.Sh NAME\n.Nm " + name + "\n.Nd " + escaped(purpose) +
         "\n.Sh SYNOPSIS\n.Nm\n.Op Ar OPTIONS\n" +
         (commands.empty() ? "" : ".Op Ar COMMAND ...\n") + ".Sh DESCRIPTION\n" +
         paragraphs(description) + ".Pp\nThe options are:\n" + optionsOf(app) +
         (commands.empty() ? "" : ".Sh COMMANDS\n" + commands) +
         (app.get_footer().empty() ? "" : ".Sh NOTES\n" + literal(app.get_footer()));
}

}  // namespace

bool printManPage(const CLI::App& app, int section, int argc, char** argv) {
  if (argc != 2 || std::string(argv[1]) != "--man") {
    return false;
  }
  std::cout << manPage(app, section) << std::flush;
  return true;
}

}  // namespace orb
