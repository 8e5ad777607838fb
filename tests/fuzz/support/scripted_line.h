#pragma once

#include <ctime>
#include <vector>

#include "support/input.h"

namespace orb::fuzz {

/// The receiver's serial line /dev/tty_gps of this program, while the object exists: each read
/// gives the next piece of a script, or what is left of one that was longer than the read. Waiting
/// takes no time, and the clock moves only as the script says. Nothing reaches a real device, and
/// the driver's log goes nowhere. Neither does what the library prints, in every program that links
/// this.
///
/// Behind the script, a harmless byte comes with each read, and each time an hour passes: whatever
/// is awaited then times out. One object at a time.
class ScriptedLine {
 public:
  struct Piece {
    Bytes bytes;  ///< none: the read finds nothing
    int secondsBefore = 0;
  };

  static constexpr std::uint8_t kHarmless = 0;
  static constexpr int kSecondsBehindTheScript = 3600;

  explicit ScriptedLine(std::vector<Piece> script);
  ScriptedLine(const ScriptedLine&) = delete;
  ScriptedLine& operator=(const ScriptedLine&) = delete;
  /// The device must be closed by then.
  ~ScriptedLine();

  // For the replaced functions.

  static ScriptedLine* current();
  static bool isOpenAs(int descriptor);
  int open();
  long read(std::uint8_t* buffer, std::size_t size);
  std::time_t time() const { return now_; }

 private:
  std::vector<Piece> script_;
  std::size_t next_ = 0;
  int descriptor_ = -1;
  std::time_t now_ = 1'700'000'000;
};

}  // namespace orb::fuzz
