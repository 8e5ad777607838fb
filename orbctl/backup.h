#pragma once

#include <string>
#include <utility>
#include <vector>

#include "orbctl/list_reader.h"
#include "orbctl/session.h"
#include "orbctl/settings.h"

namespace orb::ctl {

/// A file name that stands for standard input or output.
constexpr char kStandardStream[] = "-";

/// What a file has.
struct Backup {
  std::vector<std::pair<std::string, Json>> settings;
  Json survey;  // null where the file has none
};

/// The text of a file with the receiver's settings and what it does not have.
struct BackupText {
  std::string text;
  std::size_t count = 0;
  Json leftOut = Json::object();  // key and reason
};

/// Reads what can be read and set: TOML, with a table [settings] of the keys and a table [survey].
BackupText makeBackup(Session& session, ListReader& reader);

/// Throws Failure where the file cannot be read, or holds what is no setting.
Backup readBackup(const std::string& file);
/// As readBackup() of the text of a file, which is called `source` in what is thrown.
Backup backupFrom(const std::string& text, const std::string& source);

bool isSurveyAsIn(Session& session, const Backup& backup);
void restoreSurvey(Session& session, const Backup& backup);

}  // namespace orb::ctl
