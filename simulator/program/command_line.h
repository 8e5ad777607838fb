#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

namespace orb::sim {

/// What a command line asks for.
struct Invocation {
  std::function<int()> action;  ///< what the subcommand does; returns the exit status

  /// What follows "--": a COMMAND and its arguments, for the subcommands that take one.
  std::vector<std::string> command;
};

/// Adds a subcommand. `usage` is what follows "orb-sim NAME" in its help; of the description, the
/// first line stands in the help of orb-sim itself as well.
CLI::App* addSubcommand(CLI::App& app, const std::string& name, const std::string& usage,
                        const std::string& description);

// Each subcommand is a file of its own. Where it is asked for, it sets the invocation's action.
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
