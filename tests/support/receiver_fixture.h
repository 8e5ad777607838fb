#pragma once

#include <gtest/gtest.h>

#include <string>

#include "orb-gnss/module_driver.h"
#include "orb-sim/receiver.h"
#include "orb-sim/script.h"
#include "support/channel_values.h"
#include "support/chatty_line.h"
#include "support/device_files.h"
#include "support/hex_text.h"
#include "support/output_of.h"
#include "support/wall_clock.h"

namespace orb::test {

/// The module driver with a time stamp that tests can name.
class StampedDriver : public orbController_QN4470T01 {
 public:
  std::string timeStamp() override { return "STAMP: "; }
};

/// A pty that clients find at `tty`, and at its far end a receiver that obeys a script.
struct ReceiverOnTty {
  explicit ReceiverOnTty(const std::filesystem::path& tty) : line(script, tty) {}

  /// All bytes that clients have written so far, as a text such as "A0 A1 00 02".
  std::string sent();

  sim::Receiver receiver;
  sim::Script script{receiver};
  ChattyLine line;
};

/// A test of a driver that finds a receiver on its serial line.
class ReceiverTest : public ::testing::Test {
 protected:
  /// Lets a wait of `seconds` seconds end: harmless bytes flow, and the clock shows the start, for
  /// a few looks a second less than the limit, and from then on the limit.
  void letPass(int seconds);

  /// Whether there was one wait since letPass(), which ended at the limit and not before.
  bool hasWaitedToTheLimit() const;

  std::string sent() { return gps_.sent(); }

  DeviceFiles files_;
  WallClock clock_;
  ReceiverOnTty gps_{files_.tty};
};

/// A test of a driver whose serial line is not there.
class NoReceiverTest : public ::testing::Test {
 protected:
  DeviceFiles files_;
  WallClock clock_;
};

}  // namespace orb::test
