#include "base/plain_help.h"

#include <iomanip>
#include <sstream>

namespace orb {

std::string plainType(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  return type.substr(0, type.find(':'));
}

PlainHelp::PlainHelp(int commandWidth) : commandWidth_(commandWidth) {
  label("Positionals", "Arguments");
}

std::string PlainHelp::make_usage(const CLI::App* app, std::string name) const {
  return "\n" + CLI::Formatter::make_usage(app, std::move(name));
}

std::string PlainHelp::make_option_opts(const CLI::Option* option) const {
  const bool isNamed = option->nonpositional() && option->get_type_size() != 0;
  return isNamed ? " " + plainType(*option) : "";
}

std::string PlainHelp::make_subcommand(const CLI::App* command) const {
  const std::string description = command->get_description();
  std::ostringstream line;
  line << "  " << std::left << std::setw(commandWidth_) << command->get_name() << ' '
       << description.substr(0, description.find('\n')) << '\n';
  return line.str();
}

}  // namespace orb
