#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orb-sim/bytes.h"

namespace orb::sim {

/// A trace is the record of what went over a serial line: a file of JSON lines, one for each piece
/// of either side, as docs/traces.md describes it.

/// A time of the system's clock.
using WallTime = std::chrono::time_point<std::chrono::system_clock, std::chrono::microseconds>;

/// Who has said something.
enum class Speaker : std::uint8_t { Client, Receiver };

/// "client" or "receiver".
const char* nameOf(Speaker speaker);

/// Bytes that came from one side at one moment. They are cut as they came, not at packets.
struct TraceRecord {
  std::chrono::microseconds at{0};  ///< since the trace began
  Speaker from = Speaker::Client;   ///< who said it
  Bytes bytes;                      ///< what was said
};

/// Reads a trace piece by piece, keeping no more than one line of it. One thread at a time uses it.
class TraceParser {
 public:
  /// Takes a record.
  using Sink = std::function<void(const TraceRecord&)>;

  /// A longer line is an error.
  static constexpr std::size_t kLongestLine = 1 << 20;

  /// Whether what begins so is a trace; nothing where that is too short to tell.
  static std::optional<bool> isTrace(std::string_view start);

  /// `name` is what errors call the trace, as a rule its file.
  explicit TraceParser(std::string name) : name_(std::move(name)) {}

  /// Takes text, cut anywhere, and passes on the records that it completes. Throws
  /// std::runtime_error, with name and line, where it is not a trace.
  void push(std::string_view text, const Sink& sink);

  /// Says that the text is complete; the last line need not end in a newline. One that is cut off,
  /// as on a full disk, is left out.
  void finish(const Sink& sink);

  /// Whether the last line was cut off.
  bool isCut() const { return isCut_; }

  /// When the trace began; nothing where its header, which comes before any record, does not tell.
  std::optional<WallTime> started() const { return started_; }

 private:
  void takeLine(const Sink& sink);
  [[noreturn]] void fail(const std::string& problem) const;

  std::string name_;
  std::string line_;  ///< the beginning of a line
  std::size_t lineNumber_ = 1;
  bool hasHeader_ = false;
  bool isCut_ = false;
  std::optional<WallTime> started_;
  std::chrono::microseconds last_{0};
};

/// The records of a trace file. Throws std::runtime_error where it cannot be read, and as
/// TraceParser does. `isCut` is told whether the last line was cut off, and so left out.
std::vector<TraceRecord> loadTrace(const std::filesystem::path& file, bool* isCut = nullptr);

/// Writes a trace to a file, a line at a time, so that it is whole up to its last line whenever it
/// is looked at. Members throw std::system_error where the file cannot be written. One thread at a
/// time uses it.
class TraceWriter {
 public:
  /// Replaces a file of this name. `device` is noted in the header.
  TraceWriter(std::filesystem::path file, std::string device);

  /// Goes on with a trace. Its time goes on meanwhile, or where its header does not tell when it
  /// began, from its last record. A last line that is cut off is removed, which `isCut` tells.
  /// Throws as loadTrace() does.
  explicit TraceWriter(const std::filesystem::path& file, bool* isCut = nullptr);

  /// Adds a record. Its time is not less than that of the one before.
  void write(const TraceRecord& record);

  /// From now on, before the file gets larger than so many bytes, it is renamed to FILE.1, which is
  /// replaced, and a trace begins in a new one. `device` is noted there.
  void rotateAt(std::uintmax_t size, const std::string& device);

 private:
  void begin();
  void writeLine(const std::string& line);

  std::filesystem::path file_;
  std::string device_;
  std::ofstream stream_;
  std::chrono::microseconds start_{0};  ///< of the records' time in the file
  std::uintmax_t largest_ = 0;          ///< of the file; 0: no limit
  std::uintmax_t size_ = 0;
};

}  // namespace orb::sim
