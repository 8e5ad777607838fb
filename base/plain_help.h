#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace orb {

/// The type of an option's value, without what the parser says of its checks.
std::string plainType(const CLI::Option& option);

/// Help without what the parser knows and a reader does not ask for.
class PlainHelp : public CLI::Formatter {
 public:
  /// The names of commands take this many columns.
  explicit PlainHelp(int commandWidth);

  std::string make_usage(const CLI::App* app, std::string name) const override;
  std::string make_option_opts(const CLI::Option* option) const override;
  std::string make_subcommand(const CLI::App* command) const override;

 private:
  int commandWidth_;
};

}  // namespace orb
