#pragma once

#include <chrono>
#include <ostream>
#include <string>

#include "support/operation_test.h"

// One row an operation, and for each row every outcome that an exchange with the receiver can have.
//
//     std::vector<Query> queries();
//     INSTANTIATE_TEST_SUITE_P(PowerAndRate, QueryOutcome, testing::ValuesIn(queries()),
//     RowName());
//
// Packets are written by hand, as texts such as "A0 A1 00 01 15 15 0D 0A".

namespace orb::test {

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

/// An operation that sends one message and awaits a reply.
struct Query {
  std::string name;
  Call call;
  Sent sends;

  std::string reply;
  Answer answer;

  /// A reply that ends before its fields.
  std::string shortReply;
  Answer shortAnswer;

  /// The outputs after a failure.
  std::string untouched{};
  Answer noReply{.result = 4};   ///< its outputs are `untouched`
  Answer noDevice{.result = 8};  ///< its outputs are `untouched`
  std::string noReplyLog = "Did not receive : ";
  std::string noDeviceLog = "Could not send : ";  ///< empty: nothing is logged
};

/// A setting that is read back. Such an operation has no outputs.
struct Setting {
  std::string name;
  Call call;
  Sent sends;
  /// From the setting to its read-back. 0: the read-back goes over the same open channel.
  std::chrono::milliseconds settle{0};
  Sent reads;

  std::string reply;      ///< with the value that was set
  std::string printed{};  ///< then, to standard output

  std::string otherReply;  ///< with another value
  Answer other{.result = 1};

  /// A reply that ends before its fields, which then read as 0.
  std::string shortReply;
  Answer shortAnswer{.result = 1};

  /// 5, or 4 where the value was set to what an unanswered read-back leaves. Without device, the
  /// result has 8 instead of the 4, and the same is printed.
  Answer noReply{.result = 5};
};

/// An operation that sends one message and awaits nothing. It has no outputs and prints nothing.
struct Order {
  std::string name;
  Call call;
  Sent sends;
};

inline std::ostream& operator<<(std::ostream& out, const Query& row) { return out << row.name; }
inline std::ostream& operator<<(std::ostream& out, const Setting& row) { return out << row.name; }
inline std::ostream& operator<<(std::ostream& out, const Order& row) { return out << row.name; }

/// The row's name as that of its tests.
struct RowName {
  template <typename Info>
  std::string operator()(const Info& info) const {
    return info.param.name;
  }
};

class QueryOutcome : public OperationTest, public testing::WithParamInterface<Query> {
 protected:
  const Query& row() const { return GetParam(); }
  Observed call() { return observe(row().call); }
  sim::Script::Rule onQuery() { return onPacket(row().sends.packet); }

  Observed answered() const;
  Observed unanswered() const;
};

class SettingOutcome : public OperationTest, public testing::WithParamInterface<Setting> {
 protected:
  const Setting& row() const { return GetParam(); }
  Observed call() { return observe(row().call); }
  sim::Script::Rule onSetting() { return onPacket(row().sends.packet); }
  sim::Script::Rule onReadBack() { return onPacket(row().reads.packet); }

  Observed kept() const { return seen({.printed = row().printed}); }
  Observed seen(const Answer& answer) const;
  Observed unanswered() const;
};

class OrderOutcome : public OperationTest, public testing::WithParamInterface<Order> {
 protected:
  const Order& row() const { return GetParam(); }
  Observed call() { return observe(row().call); }
  Observed done() const;
};

}  // namespace orb::test
