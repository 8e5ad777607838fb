#pragma once

#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "operations/operations.h"
#include "operations/recording.h"
#include "support/receiver_fixture.h"

namespace orb::test {

/// The error log's line of a message that could not be sent, or that got no reply.
std::string notSent(const std::string& description);
std::string noReply(const std::string& description);

std::string times(int count, const std::string& text);

using RecordingDriver = Recording<StampedDriver>;

/// Everything that can be seen of a call from outside.
struct Observed {
  unsigned int result = 0;
  std::string outputs{};
  std::string standardOutput{};
  std::string standardError{};
  std::string errorLog{};
  /// What the serial line saw, in order: "open", the bytes written (all of one channel in one
  /// text), "wait 800 ms".
  std::vector<std::string> line{};

  bool operator==(const Observed&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Observed& observed);

/// What the line sees of a setting that is sent as this packet, and of its read-back.
std::vector<std::string> lineOf(const Setting& row, const std::string& packet);

/// A test of a driver whose calls are watched as a whole. Nothing is waited out: the driver's own
/// waits are recorded and end at once, and time-outs end when the test lets them.
///
/// The receiver answers what the test's script says, and else nothing at all.
class OperationTest : public ReceiverTest {
 protected:
  OperationTest() { gps_.script.onAny().nothing(); }

  /// Calls a driver and watches it. Fails the test if the call leaves a file open.
  Observed observe(Driver& driver, const Call& call);
  Observed observe(const Call& call) { return observe(driver_, call); }

  /// What a call sees when the packet that it sends is answered with this body.
  Observed observeAnswered(const Query& row, const std::string& body, const Call& call);

  /// As soon as `event` has been noted for the n-th time from now on, `action` is done.
  void when(std::string event, int nth, std::function<void()> action);

  /// The answer to this packet.
  sim::Script::Rule onPacket(const std::string& packet) { return gps_.script.on(hex(packet)); }

  /// From now on the receiver model answers what the script has no rule for.
  void connectReceiver() { gps_.script.clear(); }

  /// The device is gone, or there again.
  void unplug();
  void plugIn();

  /// Harmless bytes flow, and each wait for a reply that does not come is taken to its limit by the
  /// clock, which stays below the limit for a while before.
  void letWaitsEnd(int limitSeconds = 5);

  /// How many waits have gone to the limit; -1 when one of them ended otherwise.
  int waitsEnded() const;

  /// Harmless bytes flow, and the clock stays a second below the limit of every wait.
  void stayWithinTheLimit(int limitSeconds = 5);

  StampedDriver driver_;

 private:
  struct Trigger {
    std::string event;
    int countdown;
    std::function<void()> action;
  };

  class LineTrace;

  const std::filesystem::path unplugged_ = files_.folder / "tty_unplugged";
  std::vector<Trigger> triggers_;
};

}  // namespace orb::test
