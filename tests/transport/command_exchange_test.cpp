#include "transport/command_exchange.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

#include "channel_test.h"

namespace {

using namespace std::chrono_literals;
using orb::Command;
using orb::CommandExchange;
using orb::Reply;
using orb::test::Bytes;
using orb::test::ChannelTest;
using testing::Each;
using testing::ElementsAre;

constexpr orb::Request kSet{0x0C00, 3};
constexpr orb::Request kAsk{0x1500, 1, 0xB900};

const Bytes kSetPacket{0xA0, 0xA1, 0x00, 0x03, 0x0C, 0x01, 0x00, 0x0D, 0x0D, 0x0A};
const Bytes kAskPacket{0xA0, 0xA1, 0x00, 0x01, 0x15, 0x15, 0x0D, 0x0A};
const Bytes kValueOne{0xA0, 0xA1, 0x00, 0x02, 0xB9, 0x01, 0xB8, 0x0D, 0x0A};
const Bytes kAcknowledgement{0xA0, 0xA1, 0x00, 0x02, 0x83, 0x0C, 0x8F, 0x0D, 0x0A};

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
  EXPECT_EQ(exchange().send(Command(kSet).u8(1)), orb::kSucceeded);
  EXPECT_EQ(pty_.takeWritten(kSetPacket.size()), kSetPacket);
  EXPECT_EQ(calls_.readSizes().size(), 0u);
  EXPECT_EQ(log_.str(), "");
}

TEST_F(CommandExchangeTest, ReportsAndLogsWhatCannotBeSent) {
  EXPECT_EQ(exchange(kMissing).send(Command(kSet).u8(1)), orb::kNotSent);
  EXPECT_EQ(log_.str(), kSetNotSent);
}

TEST_F(CommandExchangeTest, DecodesTheReply) {
  line_.deliver(kValueOne);
  EXPECT_EQ(ask(), orb::kSucceeded);
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
            orb::kSucceeded);
  EXPECT_EQ(acknowledged, 0x0C);
}

TEST_F(CommandExchangeTest, ReportsAndLogsAMissingReply) {
  clock_.passSeconds({0, 2});
  line_.deliver(kAcknowledgement);
  EXPECT_EQ(ask(), orb::kNoReply);
  EXPECT_THAT(values_, ElementsAre());
  EXPECT_EQ(log_.str(), kAskNotAnswered);
}

TEST_F(CommandExchangeTest, DoesNotAwaitTheReplyToWhatItCouldNotSend) {
  calls_.writeResult = -1;
  EXPECT_EQ(ask(), orb::kNotSent);
  EXPECT_EQ(calls_.readSizes().size(), 0u);
  EXPECT_EQ(log_.str(), kAskNotSent);
}

TEST_F(CommandExchangeTest, ReadsASettingBackOverItsOwnChannel) {
  line_.deliver(kValueOne);
  EXPECT_EQ(exchange().configure(
                Command(kSet).u8(1), CommandExchange::kAtOnce, [&] { return ask(); },
                [&] { return values_.back() == 1; }),
            orb::kSucceeded);
  EXPECT_EQ(opened(), 1);
  EXPECT_EQ(pty_.takeWritten(kSetPacket.size() + kAskPacket.size()),
            orb::test::join({kSetPacket, kAskPacket}));
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
              orb::kNotSent);
    EXPECT_EQ(opened(), 2) << written;
    EXPECT_EQ(pty_.takeWritten(kAskPacket.size()), kAskPacket);
  }
  EXPECT_THAT(values_, ElementsAre(1, 1, 1));
}

TEST_F(CommandExchangeTest, TriesToReadBackWithoutDevice) {
  EXPECT_EQ(exchange(kMissing).configure(
                Command(kSet).u8(1), CommandExchange::kAtOnce,
                [&] { return exchange(kMissing).query(Command(kAsk), [](const Reply&) {}); }),
            orb::kNotSent);
  EXPECT_EQ(log_.str(), std::string(kSetNotSent) + kAskNotSent);
}

TEST_F(CommandExchangeTest, ReadsASettledSettingBackOverAnotherChannel) {
  line_.deliver(kValueOne);
  EXPECT_EQ(exchange().configure(Command(kSet).u8(1), 1ms, [&] { return ask(); }), orb::kSucceeded);
  EXPECT_EQ(opened(), 2);
}

TEST_F(CommandExchangeTest, RejectsASettingThatWasNotKept) {
  line_.deliver(kValueOne);
  EXPECT_EQ(exchange().configure(
                Command(kSet).u8(2), CommandExchange::kAtOnce, [&] { return ask(); },
                [&] { return values_.back() == 2; }),
            orb::kRejected);
}

TEST_F(CommandExchangeTest, AddsUpWhatWentWrong) {
  clock_.passSeconds({0, 2});
  line_.deliver(kAcknowledgement);
  EXPECT_EQ(exchange().configure(
                Command(kSet).u8(1), CommandExchange::kAtOnce, [&] { return ask(); },
                [] { return false; }),
            orb::kNoReply | orb::kRejected);
}

TEST_F(CommandExchangeTest, FlushesEachLineOfTheLog) {
  struct Buffer : std::stringbuf {
    int sync() override {
      flushed = str();
      return 0;
    }
    std::string flushed;
  } buffer;
  std::ostream log(&buffer);
  CommandExchange({kMissing, lentChannel_, 2, log, [] { return "12:00: "; }}).send(Command(kSet));
  EXPECT_EQ(buffer.flushed, kSetNotSent);
}

}  // namespace
