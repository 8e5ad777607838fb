#pragma once

#include <functional>
#include <string>

#include "orbctl/session.h"
#include "orbctl/settings.h"

namespace CLI {
class App;
}

namespace orb::ctl {

/// What all commands share.
struct Options {
  Session::Options session;
  bool isJson = false;
};

/// What a command does once its arguments are known. Throws Failure.
using Action = std::function<void(Session& session, const Options& options)>;

/// The command line's own description of a command; `chosen` takes its action.
CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& description,
                     Action& chosen, Action action);

/// Prints the outcome of a command: as JSON, `data` with the command's name; else `text`.
void show(const Options& options, const std::string& command, const Json& data,
          const std::string& text);

// Each adds its commands to the command line.

void addStatusCommands(CLI::App& app, Action& chosen);
void addSettingCommands(CLI::App& app, Action& chosen);
/// Whether this command shows a group of settings.
bool isGroup(const std::string& command);
void addBackupCommands(CLI::App& app, Action& chosen);
void addSurveyCommand(CLI::App& app, Action& chosen);
void addDeviceCommands(CLI::App& app, Action& chosen);
void addOperationCommands(CLI::App& app, Action& chosen);
void addMessageCommands(CLI::App& app, Action& chosen);
void addLogCommand(CLI::App& app, Action& chosen);
void addDoctorCommand(CLI::App& app, Action& chosen);
void addWatchCommand(CLI::App& app, Action& chosen);

/// The status at a glance, which orbctl alone shows.
void showStatus(Session& session, const Options& options);

}  // namespace orb::ctl
