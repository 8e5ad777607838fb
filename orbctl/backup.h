#pragma once

#include <string>
#include <utility>
#include <vector>

#include "orbctl/session.h"
#include "orbctl/settings.h"

namespace orb::ctl {

/// A file name that stands for standard input or output.
constexpr char kStandardStream[] = "-";

/// All settings that can be read, as a file has them.
struct Backup {
  std::vector<std::pair<std::string, Json>> settings;
  Json survey;  // null where the file has none
};

/// The text of a file with all settings of the receiver: TOML, with a table [settings] of the keys
/// and a table [survey].
std::string makeBackup(Session& session);

/// Throws Failure where the file cannot be read, or holds what is no setting.
Backup readBackup(const std::string& file);

bool isSurveyAsIn(Session& session, const Backup& backup);
void restoreSurvey(Session& session, const Backup& backup);

}  // namespace orb::ctl
