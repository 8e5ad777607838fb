#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

#include "orbctl/backup.h"
#include "orbctl/change.h"
#include "orbctl/command.h"
#include "orbctl/failure.h"
#include "orbctl/list_reader.h"
#include "orbctl/setting_values.h"

namespace orb::ctl {
namespace {

namespace fs = std::filesystem;

/// Returns what went wrong, as an error number; 0 where nothing did.
int write(const fs::path& file, const char* mode, const std::string& text) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.c_str(), mode),
                                                               std::fclose);
  const bool isWritten = stream &&
                         std::fwrite(text.data(), 1, text.size(), stream.get()) == text.size() &&
                         std::fflush(stream.get()) == 0;
  // What is no file of a disk need not be brought to one.
  return isWritten && (::fsync(::fileno(stream.get())) == 0 || errno == EINVAL) ? 0 : errno;
}

/// Writes the file whole, or leaves it as it was; what is no file, such as a FIFO, is written to.
void replace(const std::string& file, const std::string& text) {
  std::error_code error;
  const bool isThere = fs::exists(file, error);
  if (isThere && !fs::is_regular_file(file, error)) {
    error.assign(write(file, "we", text), std::generic_category());
  } else {
    const fs::path target = isThere ? fs::canonical(file, error) : fs::path(file);
    const fs::path made = fmt::format("{}.{}", target.string(), ::getpid());
    error.assign(write(made, "wxe", text), std::generic_category());  // follows no planted link
    if (!error && isThere) {
      fs::permissions(made, fs::status(target).permissions(), error);
    }
    if (!error) {
      fs::rename(made, target, error);
    }
    if (error && error != std::errc::file_exists) {
      ::unlink(made.c_str());
    }
  }
  if (error) {
    throw Failure(ExitStatus::Other, fmt::format("cannot write {}: {}", file, error.message()));
  }
}

void backup(Session& session, const Options& options, const std::string& file) {
  ListReader reader(session);
  const BackupText made = makeBackup(session, reader);
  Json data{{"file", file}};
  std::string text;
  if (file == kStandardStream) {
    data["text"] = text = made.text;
  } else {
    replace(file, made.text);
    text = fmt::format("{} has {} settings and the survey.\n", file, made.count);
    for (const auto& [key, reason] : made.leftOut.items()) {
      text += fmt::format("Left out: {}, since {}\n", key, reason.get<std::string>());
    }
  }
  data["left_out"] = made.leftOut;
  reader.show(options, "backup", "backup", data, text);
}

/// How the receiver differs from a backup.
struct Difference {
  std::vector<Change> changes;
  bool isOfSurvey = false;
  std::string text;
  Json data = Json::object();
};

Difference differenceFrom(Session& session, const Backup& wanted) {
  Difference difference;
  for (const auto& [key, value] : wanted.settings) {
    const Setting& setting = settingNamed(key);
    const Json before = setting.isReadable() ? setting.read(session) : Json();
    if (before != value) {
      difference.changes.push_back({&setting, value});
      difference.data[key] = {{"old", before}, {"new", value}};
      difference.text +=
          fmt::format("{:<23} {} -> {}\n", key, textOf(before), withUnit(setting, value));
    }
  }
  difference.isOfSurvey = !isSurveyAsIn(session, wanted);
  if (difference.isOfSurvey) {
    difference.data["survey"] = wanted.survey;
    difference.text += fmt::format("{:<23} -> {}\n", "survey", wanted.survey.dump());
  }
  return difference;
}

void apply(Session& session, const Backup& wanted, const Difference& difference) {
  std::vector<std::string> keys = keysOf(difference.changes);
  if (difference.isOfSurvey) {
    keys.emplace_back("survey");
  }
  makeEach(keys, [&](std::size_t i) {
    if (i < difference.changes.size()) {
      return change(session, difference.changes[i], false).second["changed"].get<bool>();
    }
    restoreSurvey(session, wanted);
    if (!isSurveyAsIn(session, wanted)) {
      throw Failure(ExitStatus::Refused, "set, and reads back differently",
                    "see it with: orbctl survey");
    }
    return true;
  });
}

void restore(Session& session, const Options& options, const std::string& file, bool isDry) {
  const Backup wanted = readBackup(file);
  session.requireReceiver();
  const Difference difference = differenceFrom(session, wanted);
  const bool isSame = difference.text.empty();
  if (!options.isJson) {
    show(options, "restore", {},
         isSame ? "The receiver holds all of it already.\n" : difference.text);
  }
  if (!isDry) {
    apply(session, wanted, difference);
  }
  if (options.isJson) {
    show(options, "restore", {{"dry_run", isDry}, {"settings", difference.data}}, "");
  } else if (!isDry && !isSame) {
    show(options, "restore", {}, "Restored, and read back.\n");
  }
}

}  // namespace

void addBackupCommands(CLI::App& app, Action& chosen) {
  const auto isDry = std::make_shared<bool>(false);
  const auto file = std::make_shared<std::string>();

  CLI::App* command = addCommand(
      app, "backup", "Writes settings and survey to a file, and says what it leaves out", chosen,
      [=](Session& session, const Options& options) { backup(session, options, *file); });
  command->add_option("FILE", *file, "A TOML file; - is standard output")->required();

  command = addCommand(
      app, "restore", "Shows how the settings differ from a file, sets and verifies them", chosen,
      [=](Session& session, const Options& options) { restore(session, options, *file, *isDry); });
  command->add_option("FILE", *file, "As orbctl backup has written it; - is standard input")
      ->required();
  command->add_flag("--dry-run", *isDry, "Shows the difference, and changes nothing");
}

}  // namespace orb::ctl
