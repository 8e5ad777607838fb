#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "operations/outcome.h"
#include "operations/payload.h"
#include "orb-sim/state.h"

// The operations of the driver, each described once, for the tests of every outcome, the random
// sequences, the endurance run and the fuzz targets.
//
// Packets are written by hand, as texts such as "A0 A1 00 01 15 15 0D 0A".

namespace orb::test {

/// Random numbers that are the same with every standard library, unlike its distributions.
class Numbers {
 public:
  explicit Numbers(unsigned int seed) : engine_(seed) {}

  template <typename Number = int>
  Number between(int lowest, int highest) {
    const auto count = static_cast<std::uint64_t>(highest - lowest) + 1;
    return static_cast<Number>(lowest + static_cast<int>(engine_() % count));
  }
  std::uint8_t byte() { return between<std::uint8_t>(0, 255); }
  bool coin() { return between(0, 1) == 1; }

 private:
  std::mt19937 engine_;
};

/// A call whose arguments were drawn at random.
struct Drawn {
  Call call;
  unsigned int result = 0;                       ///< from a receiver that is well
  std::function<void(sim::State&)> effect = {};  ///< on a receiver; none: nothing
};
/// A value that is rejected, with nothing sent, unless it is in range.
inline Drawn drawnInRange(bool isInRange, const Call& call,
                          const std::function<void(sim::State&)>& effect) {
  return isInRange ? Drawn{call, 0, effect} : Drawn{call, 1};
}
using Draw = std::function<Drawn(Numbers&)>;

/// A message that the driver sends.
struct Sent {
  std::string packet;
  std::string description;  ///< in the error log, such as "15 00: Query the power mode ..."
};

/// What the caller sees of a call.
struct Answer {
  unsigned int result = 0;
  std::string outputs{};
  std::string printed{};  ///< to standard output
};

/// A reply, and what it comes to.
struct Reply {
  std::string packet;
  Answer answer{};
};

/// A reply to a read-back that does not confirm what was set.
struct OtherReply {
  std::string packet;
  Answer answer{.result = 1};
};

/// The body of a reply, after its message id, and what a query makes of it.
struct Reading {
  std::string body;
  std::string outputs;
  std::string printed{};
};

/// A value that is set, and what is sent for it, to a receiver that keeps it.
struct Value {
  Call call;
  std::string packet;
  Answer answer{};
};

/// An operation that sends one message and awaits a reply.
struct Query {
  std::string name;
  Call call;
  Sent sends;

  Reply reply;
  Reply shortReply;  ///< it ends before its fields

  /// The outputs after a failure.
  std::string untouched{};
  Answer noReply{.result = 4};   ///< its outputs are `untouched`
  Answer noDevice{.result = 8};  ///< its outputs are `untouched`
  std::string noReplyLog = "Did not receive : ";
  std::string noDeviceLog = "Could not send : ";  ///< empty: nothing is logged
  int timeoutSeconds = 5;

  std::vector<Reading> readings{};  ///< further replies

  /// The outputs that a reply with any payload makes.
  std::function<std::string(const Payload&)> decoded = [](const Payload&) { return ""; };
  /// The outputs that a receiver in this state makes, with * for what is not known. None: the query
  /// is not drawn at random, or `draw` draws it.
  std::function<std::string(const sim::State&)> inState = {};
  Draw draw = {};
};

/// A setting that is read back. Such an operation has no outputs.
struct Setting {
  std::string name;
  Call call;
  Sent sends;
  /// From the setting to its read-back. 0: the read-back goes over the same open channel.
  std::chrono::milliseconds settle{0};
  Sent reads;

  Reply reply;            ///< with the value that was set
  OtherReply otherReply;  ///< with another value
  OtherReply shortReply;  ///< it ends before its fields, which then read as 0

  /// 5, or 4 where the value was set to what an unanswered read-back leaves. Without device, the
  /// result has 8 instead of the 4, and the same is printed.
  Answer noReply{.result = 5};
  bool comparesAfterFailure = true;  ///< of the setting

  std::vector<std::string> mismatches{};  ///< bodies of further replies with another value
  std::vector<Value> values{};            ///< further values
  std::vector<Call> rejected{};           ///< they come to 1 with nothing sent

  Draw draw = {};  ///< none: another row has that of the operation
};

/// An operation that sends one message and awaits nothing. It has no outputs and prints nothing.
struct Order {
  std::string name;
  Call call;
  Sent sends;
  Draw draw = {};                 ///< none: another row has that of the operation, or none has
  unsigned int resultUnsent = 8;  ///< without device
};

/// An operation that is made of others. Its outcomes have tests of their own.
struct Composite {
  std::string name;
  std::vector<std::uint16_t> replies;  ///< messages that it awaits
  Draw draw;
  /// What it reads back of a receiver's settings; none: all that it sets.
  std::function<std::string(const sim::State&)> readBack = {};
};

/// The operations that have to do with one part of the receiver.
struct Family {
  std::vector<Query> queries{};
  std::vector<Setting> settings{};
  std::vector<Order> orders{};
  std::vector<Composite> composites{};
};

// The rows of each family, in the source of its name.
Family constellations();
Family defaults();
Family detectionAndRestart();
Family extendedNmea();
Family firmwareVersion();
Family gpsTime();
Family masksAndFix();
Family navigationData();
Family navigationModel();
Family outputAndPower();
Family ppsOutputMode();
Family survey();
Family timingPulse();

inline std::ostream& operator<<(std::ostream& out, const Query& row) { return out << row.name; }
inline std::ostream& operator<<(std::ostream& out, const Setting& row) { return out << row.name; }
inline std::ostream& operator<<(std::ostream& out, const Order& row) { return out << row.name; }

}  // namespace orb::test
