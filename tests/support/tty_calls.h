#pragma once

#include <sys/types.h>
#include <termios.h>

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace orb::test {

/// A call of the C library that concerned the tty.
struct TtyCall {
  std::string_view name;
  /// open: the flags; tcflush: the queue; tcsetattr: when; read and write: the number of bytes
  long argument = 0;

  bool operator==(const TtyCall&) const = default;
};

std::ostream& operator<<(std::ostream& out, const TtyCall& call);

/// While it exists, notes what this program, and every library that it loads, does with one tty,
/// and lets calls fail. The tty is also found under the name /dev/tty_gps; the real one never is.
class TtyCalls {
 public:
  explicit TtyCalls(std::string path);
  TtyCalls(const TtyCalls&) = delete;
  TtyCalls& operator=(const TtyCalls&) = delete;
  ~TtyCalls();

  /// What was called since the start or the last forget(), in order.
  const std::vector<TtyCall>& made() const { return made_; }
  void forget() { made_.clear(); }
  /// How many bytes each read asked for.
  std::vector<long> readSizes() const;

  /// The descriptor that the tty was opened as last.
  int descriptor() const { return descriptor_; }
  bool isOpen() const { return open_; }
  /// What tcsetattr was given last.
  const termios& settings() const { return settings_; }

  // What happens instead of the call, where it is set. A result of -1 comes with errno EIO.

  std::optional<termios> settingsFound;
  std::optional<int> settingResult;
  std::optional<long> writeResult;
  std::optional<int> syncResult;
  std::function<ssize_t(int descriptor, void* buffer, std::size_t size)> read;

  // For the replaced functions.

  static TtyCalls* current();
  static TtyCalls* concernedBy(int descriptor);
  const char* translated(const char* path) const;
  bool isTty(const char* path) const { return path_ == path; }
  void noteOpen(int descriptor, int flags);
  void noteSettings(const termios& settings) { settings_ = settings; }
  void note(std::string_view name, long argument = 0) { made_.push_back({name, argument}); }
  void noteClose();

 private:
  TtyCalls* previous_;
  std::string path_;
  int descriptor_ = -1;
  bool open_ = false;
  termios settings_{};
  std::vector<TtyCall> made_;
};

}  // namespace orb::test
