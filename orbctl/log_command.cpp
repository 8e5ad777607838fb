#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <thread>

#include "orbctl/command.h"
#include "orbctl/error_log.h"
#include "orbctl/failure.h"

namespace orb::ctl {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks{300};

void showEntries(const Options& options, const std::vector<std::string>& lines) {
  Json entries = Json::array();
  std::string text;
  for (const std::string& line : lines) {
    const LogEntry entry = logEntryFrom(line);
    text += describe(entry) + "\n";
    Json row{{"line", entry.line}};
    if (!entry.message.empty()) {
      row.update({{"time", entry.time},
                  {"failure", entry.isUnanswered ? "no reply" : "not sent"},
                  {"message", entry.message},
                  {"description", entry.description}});
    }
    entries.push_back(std::move(row));
  }
  show(options, "log", {{"entries", std::move(entries)}}, text);
}

void log(const Options& options, bool follows) {
  GrowingLog file(kErrorLog);
  const std::vector<std::string> first = file.take();
  if (!file.isThere()) {
    throw Failure(ExitStatus::NotSent, fmt::format("cannot read {}", kErrorLog),
                  "it is made when the library is first used by who may write there");
  }
  showEntries(options, first);
  if (!follows) {
    return;
  }
  for (;;) {
    std::this_thread::sleep_for(kBetweenLooks);
    if (const std::vector<std::string> more = file.take(); !more.empty()) {
      showEntries(options, more);
    }
  }
}

}  // namespace

void addLogCommand(CLI::App& app, Action& chosen) {
  const auto follows = std::make_shared<bool>(false);
  CLI::App* const command =
      addCommand(app, "log", "The library's error log, in words", chosen,
                 [=](Session&, const Options& options) { log(options, *follows); });
  command->add_flag("-f,--follow", *follows, "Goes on as it grows, and after it is replaced");
}

}  // namespace orb::ctl
