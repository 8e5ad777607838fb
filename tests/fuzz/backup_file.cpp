// Backups of a receiver's settings: any text is refused in one line, or holds settings that can be
// given on the command line too. Input: the text.

#include <string>

#include "orbctl/backup.h"
#include "orbctl/failure.h"
#include "orbctl/setting_values.h"
#include "support/check.h"
#include "support/input.h"

namespace orb::test {
namespace {

void checkSettings(const ctl::Backup& backup) {
  for (const auto& [key, value] : backup.settings) {
    check(ctl::valueFrom(ctl::settingNamed(key), ctl::textOf(value)) == value,
          "a value is one of the command line's: " + key);
  }
  if (!backup.survey.is_null()) {
    const std::string mode = backup.survey["mode"].get<std::string>();
    check(mode == "dynamic" || backup.survey.size() == (mode == "auto" ? 2 : 4),
          "a survey has what its mode takes");
  }
}

}  // namespace

void tryInput(Input input) {
  try {
    checkSettings(ctl::backupFrom(std::string(input.restAsText()), "f"));
  } catch (const ctl::Failure& failure) {
    const std::string text = failure.what();
    check(failure.status() == ctl::ExitStatus::WrongUse, "a wrong file is wrong use");
    check(text.starts_with("f"), "what is wrong names the file: " + text);
    check(text.find('\n') == std::string::npos, "what is wrong is one line: " + text);
  }
}

}  // namespace orb::test
