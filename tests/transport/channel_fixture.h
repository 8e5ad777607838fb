#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "support/captured_output.h"
#include "support/channel_values.h"
#include "support/pty.h"
#include "support/scripted_line.h"
#include "support/tty_calls.h"
#include "support/wall_clock.h"

namespace orb::test {

/// A wait for a reply of two seconds on a new channel, and what comes of it.
struct Wait {
  const char* name;
  std::vector<int> clock;    ///< the seconds that each look at it finds
  std::vector<Bytes> reads;  ///< what each read finds; all are needed
  Bytes reply;               ///< its packet, or kNothing
  bool timesOut = false;     ///< it says so on standard error, also where it has a reply
  unsigned short awaited = 0x8300;
};

inline std::ostream& operator<<(std::ostream& out, const Wait& wait) { return out << wait.name; }
inline std::string nameOf(const testing::TestParamInfo<Wait>& info) { return info.param.name; }

/// A test of channels on a pty. Standard error is captured; the clock stands until it is told.
class ChannelTest : public testing::Test {
 protected:
  std::string standardError() const { return standardError_.text(); }

  /// One read finds the first `split` bytes of a packet, the next one the rest.
  void deliverInTwo(const Bytes& packet, long split) {
    line_.deliver({packet.begin(), packet.begin() + split});
    line_.deliver({packet.begin() + split, packet.end()});
  }

  void expect(const Wait& wait) {
    orbIO channel;
    calls_.forget();
    clock_.passSeconds(wait.clock);
    for (const Bytes& bytes : wait.reads) {
      line_.deliver(bytes);
    }
    EXPECT_EQ(receive(channel, wait.awaited), wait.reply);
    EXPECT_TRUE(line_.isOver());
    EXPECT_EQ(calls_.readSizes().size(), wait.reads.size());
    EXPECT_EQ(standardError(), wait.timesOut ? kTimedOut : "");
  }

  Pty pty_;
  TtyCalls calls_{pty_.path()};
  WallClock clock_;
  ScriptedLine line_{calls_, clock_};

 private:
  CapturedOutput standardError_{STDERR_FILENO};
};

}  // namespace orb::test
