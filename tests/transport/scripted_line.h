#pragma once

#include <cerrno>
#include <cstddef>
#include <deque>
#include <stdexcept>
#include <utility>
#include <variant>

#include "pty.h"
#include "tty_calls.h"

namespace orb::test {

/// What ends a read of a line that has nothing more to say: the reader would wait for ever.
struct LineStaysSilent : std::runtime_error {
  LineStaysSilent() : std::runtime_error("the line has nothing more to say") {}
};

/// The far end of a pty, which speaks when it is read: each read finds what the test says that it
/// finds, however busy the machine is.
class ScriptedLine {
 public:
  /// Takes over the reads of the tty.
  ScriptedLine(Pty& pty, TtyCalls& calls);
  ScriptedLine(const ScriptedLine&) = delete;
  ScriptedLine& operator=(const ScriptedLine&) = delete;

  /// The next read finds these bytes. What it does not ask for is left to the read after it.
  void deliver(Bytes bytes) { script_.emplace_back(std::move(bytes)); }
  /// So many reads find nothing.
  void pause(int reads) { script_.insert(script_.end(), static_cast<std::size_t>(reads), EAGAIN); }
  /// The next read fails with this error; with 0, it ends as at the end of a file.
  void fail(int error) { script_.emplace_back(error); }

  /// Whether everything was read.
  bool isOver() const { return script_.empty() && pty_.waiting() == 0; }

 private:
  ssize_t read(int descriptor, void* buffer, std::size_t size);

  Pty& pty_;
  std::deque<std::variant<Bytes, int>> script_;
};

}  // namespace orb::test
