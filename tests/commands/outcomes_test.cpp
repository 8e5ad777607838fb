// Every outcome that an exchange with the receiver can have, for each row of tests/operations.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "commands/operation_fixture.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

// Long enough to be looked for in vain many times, short enough not to be waited for.
constexpr auto kLate = 40ms;
constexpr std::size_t kPieceLength = 3;
constexpr auto kGap = 1ms;

/// The same packet with a wrong checksum.
sim::Bytes corrupted(sim::Bytes packet) {
  constexpr std::size_t kChecksumFromEnd = 3;
  packet[packet.size() - kChecksumFromEnd] ^= 0x10;
  return packet;
}

/// The acknowledgement and the refusal of a message name its id, the packet's fifth byte.
sim::Bytes acknowledgementOf(const std::string& packet) {
  return sim::frame(0x8300, {hex(packet)[4]});
}
sim::Bytes refusalOf(const std::string& packet) { return sim::frame(0x8400, {hex(packet)[4]}); }

/// The rows that have something in this member.
template <typename Row, typename Member>
std::vector<Row> rowsWith(const std::vector<Row>& rows, Member Row::*member) {
  std::vector<Row> found;
  std::copy_if(rows.begin(), rows.end(), std::back_inserter(found),
               [member](const Row& row) { return !(row.*member).empty(); });
  return found;
}

/// The row's name as that of its tests.
struct RowName {
  template <typename Info>
  std::string operator()(const Info& info) const {
    return info.param.name;
  }
};

/// A query, or a setting with its read-back, and what is seen of it.
struct Exchange {
  std::string name;
  Call call;
  std::string setting{};  ///< packet; empty for a query
  Sent query;
  std::string reply;
  std::string shortReply;
  int timeoutSeconds;

  Observed answered;
  Observed shortlyAnswered;
  Observed unanswered;
  Observed withoutDevice;
};

std::ostream& operator<<(std::ostream& out, const Exchange& row) { return out << row.name; }

Observed seen(const Answer& answer, const std::vector<std::string>& line) {
  return {.result = answer.result,
          .outputs = answer.outputs,
          .standardOutput = answer.printed,
          .line = line};
}

Observed seen(const Query& row, const Answer& answer) {
  return seen(answer, {"open", row.sends.packet});
}

/// The outputs are untouched, and a failure is logged.
Observed failed(const Query& row, const Answer& answer, const std::string& standardError,
                const std::string& failure) {
  Observed observed = seen(row, answer);
  observed.outputs = row.untouched;
  observed.standardError = standardError;
  observed.errorLog = failure.empty() ? "" : "STAMP:  " + failure + row.sends.description + "\n";
  return observed;
}

Exchange exchangeOf(const Query& row) {
  Exchange exchange{.name = row.name,
                    .call = row.call,
                    .query = row.sends,
                    .reply = row.reply.packet,
                    .shortReply = row.shortReply.packet,
                    .timeoutSeconds = row.timeoutSeconds,
                    .answered = seen(row, row.reply.answer),
                    .shortlyAnswered = seen(row, row.shortReply.answer),
                    .unanswered = failed(row, row.noReply, kTimedOut, row.noReplyLog),
                    .withoutDevice = failed(row, row.noDevice, kNoDevice, row.noDeviceLog)};
  exchange.withoutDevice.line.clear();
  return exchange;
}

Observed seen(const Setting& row, const Answer& answer) {
  return seen(answer, lineOf(row, row.sends.packet));
}

/// A wait that stands between a setting and its read-back.
std::vector<std::string> settlingOf(const Setting& row) {
  return row.settle == 0ms ? std::vector<std::string>{}
                           : std::vector{lineOf(row, row.sends.packet).at(2)};
}

Exchange exchangeOf(const Setting& row) {
  constexpr unsigned int kNoReply = 4;
  constexpr unsigned int kNotSent = 8;
  Exchange exchange{.name = row.name,
                    .call = row.call,
                    .setting = row.sends.packet,
                    .query = row.reads,
                    .reply = row.reply.packet,
                    .shortReply = row.shortReply.packet,
                    .timeoutSeconds = 5,
                    .answered = seen(row, row.reply.answer),
                    .shortlyAnswered = seen(row, row.shortReply.answer),
                    .unanswered = seen(row, row.noReply),
                    .withoutDevice = seen(row.noReply, settlingOf(row))};
  exchange.unanswered.standardError = kTimedOut;
  exchange.unanswered.errorLog = noReply(row.reads.description);
  exchange.withoutDevice.result = (row.noReply.result & ~kNoReply) | kNotSent;
  exchange.withoutDevice.standardError = times(2, kNoDevice);
  exchange.withoutDevice.errorLog = notSent(row.sends.description) + notSent(row.reads.description);
  return exchange;
}

std::vector<Exchange> exchanges() {
  std::vector<Exchange> all;
  for (const Query& row : everyOperation().queries) {
    all.push_back(exchangeOf(row));
  }
  for (const Setting& row : everyOperation().settings) {
    all.push_back(exchangeOf(row));
  }
  return all;
}

class ExchangeOutcome : public OperationTest, public testing::WithParamInterface<Exchange> {
 protected:
  const Exchange& row() const { return GetParam(); }
  Observed call() { return observe(row().call); }
  sim::Script::Rule onQuery() { return onPacket(row().query.packet); }

  void expectUnanswered() {
    letWaitsEnd(row().timeoutSeconds);
    EXPECT_EQ(call(), row().unanswered);
    EXPECT_EQ(waitsEnded(), 1);
  }
};

TEST_P(ExchangeOutcome, Succeeds) {
  onQuery().answer(hex(row().reply));
  EXPECT_EQ(call(), row().answered);
}

TEST_P(ExchangeOutcome, SucceedsAfterTheAcknowledgement) {
  if (!row().setting.empty()) {
    onPacket(row().setting).answer(acknowledgementOf(row().setting));
  }
  onQuery().answer(acknowledgementOf(row().query.packet) + hex(row().reply));
  EXPECT_EQ(call(), row().answered);
}

TEST_P(ExchangeOutcome, SucceedsWithALateReply) {
  stayWithinTheLimit(row().timeoutSeconds);
  onQuery().answer(hex(row().reply)).after(kLate);
  EXPECT_EQ(call(), row().answered);
}

TEST_P(ExchangeOutcome, SucceedsWithAReplyInPieces) {
  onQuery().answer(hex(row().reply)).inPieces(kPieceLength, kGap);
  EXPECT_EQ(call(), row().answered);
}

TEST_P(ExchangeOutcome, SucceedsAtTheLimitWhenACorruptReplyIsRepeated) {
  letWaitsEnd(row().timeoutSeconds);
  onQuery().answer(corrupted(hex(row().reply)) + hex(row().reply));
  Observed expected = row().answered;
  expected.standardError = kTimedOut;
  EXPECT_EQ(call(), expected);
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_P(ExchangeOutcome, ReadsWhatAShortReplyLacksAsZero) {
  onQuery().answer(hex(row().shortReply));
  EXPECT_EQ(call(), row().shortlyAnswered);
}

TEST_P(ExchangeOutcome, TimesOutWithoutReply) { expectUnanswered(); }

TEST_P(ExchangeOutcome, TimesOutWhenRefused) {
  onQuery().answer(refusalOf(row().query.packet));
  expectUnanswered();
}

TEST_P(ExchangeOutcome, TimesOutOnACorruptReply) {
  onQuery().answer(corrupted(hex(row().reply)));
  expectUnanswered();
}

TEST_P(ExchangeOutcome, FailsWithoutDevice) {
  unplug();
  EXPECT_EQ(call(), row().withoutDevice);
}

INSTANTIATE_TEST_SUITE_P(Each, ExchangeOutcome, testing::ValuesIn(exchanges()), RowName());

class QueryReadings : public OperationTest, public testing::WithParamInterface<Query> {};

TEST_P(QueryReadings, AreThoseOfTheReply) {
  for (const Reading& reading : GetParam().readings) {
    EXPECT_EQ(observeAnswered(GetParam(), reading.body, GetParam().call),
              seen(GetParam(), {0, reading.outputs, reading.printed}))
        << reading.body;
  }
}

INSTANTIATE_TEST_SUITE_P(Each, QueryReadings,
                         testing::ValuesIn(rowsWith(everyOperation().queries, &Query::readings)),
                         RowName());

class SettingTest : public OperationTest, public testing::WithParamInterface<Setting> {
 protected:
  const Setting& row() const { return GetParam(); }
  Observed call() { return observe(row().call); }
  sim::Script::Rule onReadBack() { return onPacket(row().reads.packet); }
};

class SettingOutcome : public SettingTest {};

TEST_P(SettingOutcome, ReportsAnotherValue) {
  onReadBack().answer(hex(row().otherReply.packet));
  EXPECT_EQ(call(), seen(row(), row().otherReply.answer));
}

// The refusal itself goes unseen.
TEST_P(SettingOutcome, ReportsAnotherValueWhenRefused) {
  onPacket(row().sends.packet).answer(refusalOf(row().sends.packet));
  onReadBack().answer(hex(row().otherReply.packet));
  EXPECT_EQ(call(), seen(row(), row().otherReply.answer));
}

INSTANTIATE_TEST_SUITE_P(Each, SettingOutcome, testing::ValuesIn(everyOperation().settings),
                         RowName());

/// Plugs the device in as soon as the first failure is logged: between a setting and its read-back.
class LatePlug : public StampedDriver {
 public:
  explicit LatePlug(std::function<void()> plugIn) : plugIn_(std::move(plugIn)) {}
  std::string timeStamp() override {
    if (plugIn_) {
      std::exchange(plugIn_, nullptr)();
    }
    return StampedDriver::timeStamp();
  }

 private:
  std::function<void()> plugIn_;
};

class UnsentSetting : public SettingTest {
 protected:
  UnsentSetting() { unplug(); }

  Observed call() {
    LatePlug driver([this] { plugIn(); });
    return observe(driver, row().call);
  }

  /// The result of the read-back is `readBack`.
  Observed readBackTo(const Answer& readBack) const {
    std::vector<std::string> line = settlingOf(row());
    line.insert(line.end(), {"open", row().reads.packet});
    Observed observed = seen(readBack, line);
    observed.result |= 8;
    observed.standardError = kNoDevice;
    observed.errorLog = notSent(row().sends.description);
    return observed;
  }
};

TEST_P(UnsentSetting, IsReadBackOverAChannelOfItsOwn) {
  onReadBack().answer(hex(row().reply.packet));
  EXPECT_EQ(call(), readBackTo(row().reply.answer));
}

TEST_P(UnsentSetting, AddsUpWithAnotherValue) {
  onReadBack().answer(hex(row().otherReply.packet));
  Answer other = row().otherReply.answer;
  other.result = row().comparesAfterFailure ? other.result : 0;
  EXPECT_EQ(call(), readBackTo(other));
}

TEST_P(UnsentSetting, AddsUpWithAMissingReadBack) {
  letWaitsEnd();
  Observed expected = readBackTo(row().noReply);
  expected.standardError += kTimedOut;
  expected.errorLog += noReply(row().reads.description);
  EXPECT_EQ(call(), expected);
  EXPECT_EQ(waitsEnded(), 1);
}

INSTANTIATE_TEST_SUITE_P(Each, UnsentSetting, testing::ValuesIn(everyOperation().settings),
                         RowName());

class SettingMismatches : public SettingTest {};

TEST_P(SettingMismatches, AreReported) {
  for (const std::string& body : row().mismatches) {
    onReadBack().answer(sim::frame(messageIn(row().reply.packet), hex(body)));
    const Observed observed = call();
    EXPECT_EQ(observed.result, 1u) << body;
    EXPECT_EQ(observed.line, seen(row(), {}).line) << body;
  }
}

INSTANTIATE_TEST_SUITE_P(Each, SettingMismatches,
                         testing::ValuesIn(rowsWith(everyOperation().settings,
                                                    &Setting::mismatches)),
                         RowName());

class SettingValues : public SettingTest {};

TEST_P(SettingValues, AreSentAndReadBackFromAReceiver) {
  connectReceiver();
  for (const Value& value : row().values) {
    EXPECT_EQ(observe(value.call), seen(value.answer, lineOf(row(), value.packet)));
  }
}

INSTANTIATE_TEST_SUITE_P(Each, SettingValues,
                         testing::ValuesIn(rowsWith(everyOperation().settings, &Setting::values)),
                         RowName());

class SettingRejections : public SettingTest {};

TEST_P(SettingRejections, LeaveTheDeviceClosed) {
  connectReceiver();
  for (std::size_t i = 0; i < row().rejected.size(); ++i) {
    EXPECT_EQ(observe(row().rejected[i]), Observed{.result = 1}) << "value " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Each, SettingRejections,
                         testing::ValuesIn(rowsWith(everyOperation().settings, &Setting::rejected)),
                         RowName());

class OrderOutcome : public OperationTest, public testing::WithParamInterface<Order> {
 protected:
  const Order& row() const { return GetParam(); }
  Observed done() const { return {.line = {"open", row().sends.packet}}; }
};

TEST_P(OrderOutcome, SucceedsWhenSent) { EXPECT_EQ(observe(row().call), done()); }

TEST_P(OrderOutcome, SucceedsEvenWhenRefused) {
  onPacket(row().sends.packet).answer(refusalOf(row().sends.packet));
  EXPECT_EQ(observe(row().call), done());
}

TEST_P(OrderOutcome, FailsWithoutDevice) {
  unplug();
  EXPECT_EQ(observe(row().call), (Observed{.result = row().resultUnsent,
                                           .standardError = kNoDevice,
                                           .errorLog = notSent(row().sends.description)}));
}

INSTANTIATE_TEST_SUITE_P(Each, OrderOutcome, testing::ValuesIn(everyOperation().orders), RowName());

}  // namespace
}  // namespace orb::test
