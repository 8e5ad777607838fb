#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "channel_values.h"
#include "support/captured_output.h"
#include "support/pty.h"
#include "support/scripted_line.h"
#include "support/tty_calls.h"
#include "support/wall_clock.h"

namespace orb::test {

/// A test of channels on a pty. Standard error is captured; the clock stands until it is told.
class ChannelTest : public testing::Test {
 protected:
  std::string standardError() const { return standardError_.text(); }

  /// One read finds the first `split` bytes of a packet, the next one the rest.
  void deliverInTwo(const Bytes& packet, long split) {
    line_.deliver({packet.begin(), packet.begin() + split});
    line_.deliver({packet.begin() + split, packet.end()});
  }

  Pty pty_;
  TtyCalls calls_{pty_.path()};
  WallClock clock_;
  ScriptedLine line_{calls_, clock_};

 private:
  CapturedOutput standardError_{STDERR_FILENO};
};

}  // namespace orb::test
