#include "transport/command_exchange.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

#include "channel_test.h"
#include "support/captured_stream.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;

constexpr Request kSet{0x0C00, 3};
constexpr Request kAsk{0x1500, 1, 0xB900};

const Bytes kSetPacket = hex("A0 A1 00 03 0C 01 00 0D 0D 0A");
const Bytes kAskPacket = hex("A0 A1 00 01 15 15 0D 0A");
const Bytes kValueOne = hex("A0 A1 00 02 B9 01 B8 0D 0A");
const Bytes kAcknowledgement = hex("A0 A1 00 02 83 0C 8F 0D 0A");

constexpr const char* kMissing = "/dev/tty_gps/missing";
constexpr const char* kSetNotSent = "12:00:  Could not send : 0C 00: Set system power mode\n";
constexpr const char* kAskNotSent =
    "12:00:  Could not send : 15 00: Query the power mode status of GNSS receiver \n";
constexpr const char* kAskNotAnswered =
    "12:00:  Did not receive : 15 00: Query the power mode status of GNSS receiver \n";

/// Exchanges on a scripted line. Their replies are awaited for two seconds.
class CommandExchangeTest : public ChannelTest {
 protected:
  CommandExchange exchange(std::string device = "/dev/tty_gps") {
    return CommandExchange({std::move(device), lentChannel_, 2, log_, [] { return "12:00: "; }});
  }

  unsigned int ask() {
    return exchange().query(Command(kAsk),
                            [&](const Reply& reply) { values_.push_back(reply.u8(1)); });
  }

  int opened() const {
    return static_cast<int>(std::count_if(calls_.made().begin(), calls_.made().end(),
                                          [](const auto& call) { return call.name == "open"; }));
  }

  orbIO* lentChannel_ = nullptr;
  std::ostringstream log_;
  std::vector<int> values_;
};

TEST_F(CommandExchangeTest, SendsAndAwaitsNothing) {
  EXPECT_EQ(exchange().send(Command(kSet).u8(1)), kSucceeded);
  EXPECT_EQ(pty_.takeWritten(kSetPacket.size()), kSetPacket);
  EXPECT_EQ(calls_.readSizes().size(), 0u);
  EXPECT_EQ(log_.str(), "");
}

TEST_F(CommandExchangeTest, ReportsAndLogsWhatCannotBeSent) {
  EXPECT_EQ(exchange(kMissing).send(Command(kSet).u8(1)), kNotSent);
  EXPECT_EQ(log_.str(), kSetNotSent);
}

TEST_F(CommandExchangeTest, DecodesTheReply) {
  line_.deliver(kValueOne);
  EXPECT_EQ(ask(), kSucceeded);
  EXPECT_EQ(pty_.takeWritten(kAskPacket.size()), kAskPacket);
  EXPECT_THAT(values_, ElementsAre(1));
  EXPECT_EQ(log_.str(), "");
}

TEST_F(CommandExchangeTest, AwaitsAnotherReplyWhereItIsNamed) {
  line_.deliver(kValueOne);
  line_.deliver(kAcknowledgement);
  int acknowledged = 0;
  EXPECT_EQ(exchange().query(Command(kAsk), 0x8300,
                             [&](const Reply& reply) { acknowledged = reply.u8(1); }),
            kSucceeded);
  EXPECT_EQ(acknowledged, 0x0C);
}

TEST_F(CommandExchangeTest, ReportsAndLogsAMissingReply) {
  clock_.passSeconds({0, 2});
  line_.deliver(kAcknowledgement);
  EXPECT_EQ(ask(), kNoReply);
  EXPECT_THAT(values_, ElementsAre());
  EXPECT_EQ(log_.str(), kAskNotAnswered);
}

TEST_F(CommandExchangeTest, DoesNotAwaitTheReplyToWhatItCouldNotSend) {
  calls_.writeResult = -1;
  EXPECT_EQ(ask(), kNotSent);
  EXPECT_EQ(calls_.readSizes().size(), 0u);
  EXPECT_EQ(log_.str(), kAskNotSent);
}

TEST_F(CommandExchangeTest, ReadsASettingBackOverItsOwnChannel) {
  line_.deliver(kValueOne);
  EXPECT_EQ(exchange().configure(
                Command(kSet).u8(1), CommandExchange::kAtOnce, [&] { return ask(); },
                [&] { return values_.back() == 1; }),
            kSucceeded);
  EXPECT_EQ(opened(), 1);
  EXPECT_EQ(pty_.takeWritten(kSetPacket.size() + kAskPacket.size()), kSetPacket + kAskPacket);
  EXPECT_EQ(lentChannel_, nullptr) << "lent while the read-back runs";
}

TEST_F(CommandExchangeTest, TakesBackTheChannelWhenTheReadBackThrows) {
  EXPECT_THROW(exchange().configure(Command(kSet).u8(1), CommandExchange::kAtOnce,
                                    []() -> unsigned int { throw 1; }),
               int);
  EXPECT_EQ(lentChannel_, nullptr);
}

// The rest of the packet would swallow the query.
TEST_F(CommandExchangeTest, ReadsBackOverAnotherChannelWhatWasNotSentWhole) {
  for (const long written : {-1L, 0L, 9L}) {
    calls_.forget();
    calls_.writeResult = written;
    line_.deliver(kValueOne);
    EXPECT_EQ(exchange().configure(Command(kSet).u8(1), CommandExchange::kAtOnce,
                                   [&] {
                                     calls_.writeResult.reset();
                                     return ask();
                                   }),
              kNotSent);
    EXPECT_EQ(opened(), 2) << written;
    EXPECT_EQ(pty_.takeWritten(kAskPacket.size()), kAskPacket);
  }
  EXPECT_THAT(values_, ElementsAre(1, 1, 1));
}

TEST_F(CommandExchangeTest, TriesToReadBackWithoutDevice) {
  EXPECT_EQ(exchange(kMissing).configure(
                Command(kSet).u8(1), CommandExchange::kAtOnce,
                [&] { return exchange(kMissing).query(Command(kAsk), [](const Reply&) {}); }),
            kNotSent);
  EXPECT_EQ(log_.str(), std::string(kSetNotSent) + kAskNotSent);
}

TEST_F(CommandExchangeTest, ReadsASettledSettingBackOverAnotherChannel) {
  line_.deliver(kValueOne);
  EXPECT_EQ(exchange().configure(Command(kSet).u8(1), 1ms, [&] { return ask(); }), kSucceeded);
  EXPECT_EQ(opened(), 2);
}

TEST_F(CommandExchangeTest, RejectsASettingThatWasNotKept) {
  line_.deliver(kValueOne);
  EXPECT_EQ(exchange().configure(
                Command(kSet).u8(2), CommandExchange::kAtOnce, [&] { return ask(); },
                [&] { return values_.back() == 2; }),
            kRejected);
}

TEST_F(CommandExchangeTest, AddsUpWhatWentWrong) {
  clock_.passSeconds({0, 2});
  line_.deliver(kAcknowledgement);
  EXPECT_EQ(exchange().configure(
                Command(kSet).u8(1), CommandExchange::kAtOnce, [&] { return ask(); },
                [] { return false; }),
            kNoReply | kRejected);
}

TEST_F(CommandExchangeTest, FlushesEachLineOfTheLog) {
  std::ostream log(nullptr);
  const CapturedStream captured(log);
  CommandExchange({kMissing, lentChannel_, 2, log, [] { return "12:00: "; }}).send(Command(kSet));
  EXPECT_EQ(captured.flushedText(), kSetNotSent);
}

}  // namespace
}  // namespace orb::test
