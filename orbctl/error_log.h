#pragma once

#include <sys/types.h>

#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace orb::ctl {

/// Where the library notes exchanges that failed.
constexpr char kErrorLog[] = "/var/log/orbset-errors.log";

/// An exchange that failed. A line that is none of the library's has its text alone, one that is
/// longer than any of those the start of it.
struct LogEntry {
  std::string line;
  std::string time;           // such as "14:03:27.042"
  bool isUnanswered = false;  // sent, but no reply came; else it could not be sent
  std::string message;        // id and sub-id, such as "64 07"
  std::string description;    // of the message
};

LogEntry logEntryFrom(const std::string& line);

/// In words: "14:03:27.042  no reply to: Query ... (64 07)".
std::string describe(const LogEntry& entry);

/// The last whole line of a log, as far as it stands in the log's last 64 KiB.
std::optional<std::string> lastLine(const std::string& path);

/// A log that others write to, cut off and replace.
class GrowingLog {
 public:
  explicit GrowingLog(std::string path) : path_(std::move(path)) {}

  /// The whole lines that have come since this was last asked.
  std::vector<std::string> take();

  bool isThere() const { return stream_.is_open(); }

 private:
  bool isAnother() const;
  void open();
  void readOn(std::vector<std::string>& lines);

  std::string path_;
  std::ifstream stream_;
  ino_t file_ = 0;
  std::streamoff position_ = 0;
  std::string begun_;  // a line that does not end yet
};

}  // namespace orb::ctl
