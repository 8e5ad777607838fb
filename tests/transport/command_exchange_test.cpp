#include "transport/command_exchange.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

#include "channel_fixture.h"
#include "support/captured_stream.h"

namespace orb::test {
namespace {

using testing::ElementsAre;

constexpr Request kSet{0x0C00, 3};
constexpr Request kAsk{0x1500, 1, 0xB900};

const Bytes kAskPacket = hex("A0 A1 00 01 15 15 0D 0A");
const Bytes kValueOne = hex("A0 A1 00 02 B9 01 B8 0D 0A");

constexpr const char* kMissing = "/dev/tty_gps/missing";
constexpr const char* kSetNotSent = "12:00:  Could not send : 0C 00: Set system power mode\n";
constexpr const char* kAskNotSent =
    "12:00:  Could not send : 15 00: Query the power mode status of GNSS receiver \n";
constexpr const char* kAskNotAnswered =
    "12:00:  Did not receive : 15 00: Query the power mode status of GNSS receiver \n";

/// Exchanges on a scripted line.
class CommandExchangeTest : public ChannelTest {
 protected:
  CommandExchange exchange() {
    return CommandExchange({"/dev/tty_gps", lentChannel_, 2, log_, [] { return "12:00: "; }});
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

TEST_F(CommandExchangeTest, DecodesTheReply) {
  line_.deliver(kValueOne);
  EXPECT_EQ(ask(), kSucceeded);
  EXPECT_EQ(pty_.takeWritten(kAskPacket.size()), kAskPacket);
  EXPECT_THAT(values_, ElementsAre(1));
  EXPECT_EQ(log_.str(), "");
}

TEST_F(CommandExchangeTest, LogsTheQueryWhoseReplyDoesNotCome) {
  clock_.passSeconds({0, 2});
  line_.deliver(hex("24"));
  EXPECT_EQ(ask(), kNoReply);
  EXPECT_TRUE(values_.empty());
  EXPECT_EQ(log_.str(), kAskNotAnswered);
}

TEST_F(CommandExchangeTest, RejectsWhatIsNotKept) {
  const auto configure = [&](unsigned int readBack, bool isKept) {
    return exchange().configure(
        Command(kSet).u8(1), CommandExchange::kAtOnce, [&] { return readBack; },
        [&] { return isKept; });
  };
  EXPECT_EQ(configure(kSucceeded, true), kSucceeded);
  EXPECT_EQ(configure(kSucceeded, false), kRejected);
  EXPECT_EQ(configure(kNoReply, false), kRejected | kNoReply);
}

TEST_F(CommandExchangeTest, DoesNotAwaitTheReplyToWhatItCouldNotSend) {
  calls_.writeResult = -1;
  EXPECT_EQ(ask(), kNotSent);
  EXPECT_EQ(calls_.readSizes().size(), 0u);
  EXPECT_EQ(log_.str(), kAskNotSent);
}

TEST_F(CommandExchangeTest, TakesBackTheChannelAfterTheReadBackAlsoWhenItThrows) {
  const auto readBack = [&] {
    EXPECT_NE(lentChannel_, nullptr);
    return kSucceeded;
  };
  EXPECT_EQ(exchange().configure(Command(kSet).u8(1), CommandExchange::kAtOnce, readBack),
            kSucceeded);
  EXPECT_EQ(lentChannel_, nullptr);
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

TEST_F(CommandExchangeTest, FlushesEachLineOfTheLog) {
  std::ostream log(nullptr);
  const CapturedStream captured(log);
  CommandExchange({kMissing, lentChannel_, 2, log, [] { return "12:00: "; }}).send(Command(kSet));
  EXPECT_EQ(captured.flushedText(), kSetNotSent);
}

}  // namespace
}  // namespace orb::test
