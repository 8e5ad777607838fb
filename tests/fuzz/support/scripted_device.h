#pragma once

#include <vector>

#include "support/hex_text.h"
#include "support/scripted_line.h"
#include "support/simulated_sleep.h"
#include "support/tty_calls.h"
#include "support/wall_clock.h"

namespace orb::test {

/// The receiver's serial line /dev/tty_gps of this program, while the object exists: each read
/// returns the next piece of a script, or what is left of one that was longer than the read. After
/// the script, whatever is awaited times out. Waiting takes no time, and the clock moves only as
/// the script says. Nothing reaches a real device, and what the library logs and prints goes
/// nowhere in every program that links this. One object at a time.
class ScriptedDevice {
 public:
  struct Piece {
    Bytes bytes;  ///< none: the read finds nothing
    int secondsBefore = 0;
  };

  explicit ScriptedDevice(const std::vector<Piece>& script);
  ScriptedDevice(const ScriptedDevice&) = delete;
  ScriptedDevice& operator=(const ScriptedDevice&) = delete;
  /// The device must be closed by then.
  ~ScriptedDevice();

 private:
  TtyCalls calls_{"/dev/null"};
  WallClock clock_;
  SimulatedSleep sleep_;
  ScriptedLine line_{calls_, clock_};
};

}  // namespace orb::test
