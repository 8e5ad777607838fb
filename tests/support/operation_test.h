#pragma once

#include <filesystem>
#include <functional>
#include <ostream>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "support/receiver_test.h"

namespace orb::test {

/// What a call of the driver returns, and what it leaves in its arguments, as text:
///
///     unsigned int mode = 77;
///     return Outcome(driver.gpsObtGetPowerMode(mode), mode);
struct Outcome {
  template <typename... Outputs>
  explicit Outcome(unsigned int callResult, const Outputs&... values) : result(callResult) {
    (add(values), ...);
  }

  unsigned int result;
  std::string outputs;  ///< such as `12, "2D", true`

 private:
  template <typename Output>
  void add(const Output& value) {
    std::ostringstream text;
    text.precision(17);
    if constexpr (std::is_same_v<Output, std::string>) {
      text << '"' << value << '"';
    } else if constexpr (std::is_same_v<Output, bool>) {
      text << std::boolalpha << value;
    } else {
      text << +value;
    }
    outputs += (outputs.empty() ? "" : ", ") + text.str();
  }
};

using Call = std::function<Outcome(orbController_QN4470T01&)>;

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

/// A test of a driver whose calls are watched as a whole. Nothing is waited out: the driver's own
/// waits are taken down and end at once, and time-outs end when the test lets them.
///
/// The receiver answers what the test's script says, and else nothing at all.
class OperationTest : public ReceiverTest {
 protected:
  OperationTest() { gps_.script.onAny().nothing(); }

  /// Calls a driver and watches it. Fails the test if the call leaves a file open.
  Observed observe(orbController_QN4470T01& driver, const Call& call);
  Observed observe(const Call& call) { return observe(driver_, call); }

  /// As soon as `event` has been noted for the n-th time from now on, `action` is done.
  void when(std::string event, int nth, std::function<void()> action);

  /// The answer to this packet.
  sim::Script::Rule onPacket(const std::string& packet) { return gps_.script.on(bytes(packet)); }

  /// From now on the receiver model answers what the script has no rule for.
  void connectReceiver() { gps_.script.clear(); }

  /// The device is gone, or there again.
  void unplug();
  void plugIn();

  /// Harmless bytes flow, and each wait for a reply that does not come is taken to its limit of
  /// five seconds by the clock, which stays below the limit for a while before.
  void letWaitsEnd();

  /// How many waits have gone to the limit; -1 when one of them ended otherwise.
  int waitsEnded() const;

  /// Harmless bytes flow, and the clock stays a second below the limit of every wait.
  void stayWithinTheLimit();

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
