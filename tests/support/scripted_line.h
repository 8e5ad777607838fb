#pragma once

#include <sys/types.h>

#include <cstddef>
#include <deque>
#include <stdexcept>

#include "support/hex_text.h"
#include "support/tty_calls.h"
#include "support/wall_clock.h"

namespace orb::test {

/// What ends a read of a line that has nothing more to say: the reader would wait for ever.
struct LineStaysSilent : std::runtime_error {
  LineStaysSilent() : std::runtime_error("the line has nothing more to say") {}
};

/// The far end of a tty that speaks when it is read: each read finds what the script says, however
/// busy the machine is. After the script a read throws LineStaysSilent.
class ScriptedLine {
 public:
  /// Takes over the reads of the tty. The clock is the one that deliver() moves.
  ScriptedLine(TtyCalls& calls, WallClock& clock);
  ScriptedLine(const ScriptedLine&) = delete;
  ScriptedLine& operator=(const ScriptedLine&) = delete;

  /// The next read finds these bytes, and the clock gone on by so many seconds. What it does not
  /// ask for is left to the read after it. Without bytes the read finds nothing.
  void deliver(Bytes bytes, int secondsBefore = 0);
  /// So many reads find nothing.
  void pause(int reads);
  /// The next read fails with this error; with 0, it ends as at the end of a file.
  void fail(int error);
  /// After the script, each read finds a zero byte, and the clock gone on by an hour: whatever is
  /// awaited then times out.
  void endInTimeOut() { endsInTimeOut_ = true; }

  /// Whether everything was read.
  bool isOver() const { return script_.empty(); }

  static constexpr int kSecondsAfterTheScript = 3600;

 private:
  struct Event {
    Bytes bytes;
    int secondsBefore;
    int error;  // what a read fails with that finds no bytes
  };

  ssize_t read(void* buffer, std::size_t size);

  WallClock& clock_;
  std::deque<Event> script_;
  bool endsInTimeOut_ = false;
};

}  // namespace orb::test
