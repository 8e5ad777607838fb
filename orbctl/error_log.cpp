#include "orbctl/error_log.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <regex>

#include "base/plain_text.h"

namespace orb::ctl {

LogEntry logEntryFrom(const std::string& line) {
  static const std::regex kEntry(
      R"((\d\d:\d\d:\d\d)_(\d+):  (Could not send|Did not receive) : (\w\w \w\w): (.*?) *)");
  constexpr std::size_t kLongestLine = 256;  // matching takes stack for each character
  LogEntry entry;
  if (line.size() > kLongestLine) {
    entry.line = line.substr(0, kLongestLine) + "...";
    return entry;
  }
  entry.line = line;
  if (std::smatch part; std::regex_match(line, part, kEntry)) {
    entry.time = fmt::format("{}.{}", part.str(1), part.str(2));
    entry.isUnanswered = part.str(3) == "Did not receive";
    entry.message = part.str(4);
    entry.description = part.str(5);
  }
  return entry;
}

std::string describe(const LogEntry& entry) {
  return entry.message.empty() ? plain(entry.line)
                               : fmt::format("{}  {}: {} ({})", entry.time,
                                             entry.isUnanswered ? "no reply to" : "could not send",
                                             plain(entry.description), entry.message);
}

std::optional<std::string> lastLine(const std::string& path) {
  constexpr std::streamoff kEnd = 65536;
  std::ifstream log(path, std::ios::binary | std::ios::ate);
  const std::streamoff size = std::min<std::streamoff>(log.tellg(), kEnd);
  if (size <= 0) {
    return std::nullopt;
  }
  std::string end(static_cast<std::size_t>(size), '\0');
  log.seekg(-size, std::ios::end);
  log.read(end.data(), size);
  end.resize(static_cast<std::size_t>(log.gcount()));
  const std::size_t lineEnd = end.rfind('\n');
  if (lineEnd == std::string::npos) {
    return std::nullopt;
  }
  end.resize(lineEnd);
  return end.substr(end.rfind('\n') + 1);
}

std::vector<std::string> GrowingLog::take() {
  std::vector<std::string> lines;
  readOn(lines);
  if (isAnother()) {
    open();
    readOn(lines);
  }
  return lines;
}

/// Whether the file is not the one that is read, or is shorter than what was read of it.
bool GrowingLog::isAnother() const {
  struct stat now {};
  return ::stat(path_.c_str(), &now) == 0 &&
         (!stream_.is_open() || now.st_ino != file_ || now.st_size < position_);
}

void GrowingLog::open() {
  struct stat now {};
  ::stat(path_.c_str(), &now);
  file_ = now.st_ino;
  position_ = 0;
  begun_.clear();
  stream_ = std::ifstream(path_);
}

void GrowingLog::readOn(std::vector<std::string>& lines) {
  stream_.clear();
  for (std::string line; std::getline(stream_, line);) {
    position_ += static_cast<std::streamoff>(line.size());
    begun_ += line;
    if (stream_.eof()) {
      return;
    }
    ++position_;
    lines.push_back(std::move(begun_));
    begun_.clear();
  }
}

}  // namespace orb::ctl
