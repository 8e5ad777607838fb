#pragma once

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace orb::sim {

/// What a command line asks for.
struct Invocation {
  /// What each subcommand does; returns the exit status.
  std::map<const CLI::App*, std::function<int()>> actions;

  /// What follows "--": a COMMAND and its arguments.
  std::vector<std::string> command;
  std::set<const CLI::App*> commandTakers;  ///< the subcommands that take one
};

/// Adds a subcommand. `usage` is what follows "orb-sim NAME" in its help; of the description, the
/// first line stands in the help of orb-sim itself as well.
CLI::App* addSubcommand(CLI::App& app, const std::string& name, const std::string& usage,
                        const std::string& description);

/// A whole number that the user has written. Throws CLI::ValidationError where it is none, or too
/// large.
template <typename Number>
Number wholeNumber(const std::string& text) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc{} && last == end) {
    return number;
  }
  throw CLI::ValidationError(text + " is not a whole number from 0 to " +
                             std::to_string(std::numeric_limits<Number>::max()));
}

/// An option whose value `take` gets; what it throws as CLI::ValidationError is said of the option.
CLI::Option* addOption(CLI::App& subcommand, const std::string& name, const std::string& type,
                       const std::string& description,
                       const std::function<void(const std::string& value)>& take);

/// An option or argument whose value is a path, or a name that stands for one. An empty value,
/// which would otherwise pass for none, is refused.
CLI::Option* addPath(CLI::App& subcommand, const std::string& name, const std::string& type,
                     std::filesystem::path& path, const std::string& description);

// Each subcommand is a file of its own, which adds its action.
void addRun(CLI::App& app, Invocation& invocation);
void addServe(CLI::App& app, Invocation& invocation);
void addScenarios(CLI::App& app, Invocation& invocation);
void addTap(CLI::App& app, Invocation& invocation);
void addReplay(CLI::App& app, Invocation& invocation);
void addDecode(CLI::App& app, Invocation& invocation);

/// Reads the whole command line and does what it asks for; returns the exit status. Throws what
/// the subcommand throws.
int execute(int argc, char** argv);

}  // namespace orb::sim
