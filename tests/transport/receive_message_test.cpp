// Waiting for a reply.

#include <gmock/gmock.h>

#include <array>
#include <cerrno>
#include <climits>
#include <memory>
#include <new>
#include <optional>

#include "channel_test.h"
#include "support/allocations.h"

namespace orb::test {
namespace {

using testing::ElementsAre;

class ReceiveMessage : public ChannelTest {
 protected:
  ReceiveMessage() { calls_.forget(); }

  std::size_t reads() const { return calls_.readSizes().size(); }

  orbIO channel_;
};

TEST_F(ReceiveMessage, ReturnsAReplyAtOnce) {
  line_.deliver(kAck);
  const std::unique_ptr<ORBMessage> reply(channel_.ReceiveMessage(0x8300, 2));
  ASSERT_NE(reply, nullptr);
  EXPECT_EQ(reply->getMsgSidId(), 0x8300);
  EXPECT_EQ(packetOf(*reply), kAck);
  EXPECT_EQ(reads(), 1u);
  EXPECT_EQ(clock_.readings(), 1) << "the start; the end is not looked at";
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveMessage, FindsAReplyWithASubId) {
  line_.deliver(kPulseWidth);
  EXPECT_EQ(receive(channel_, 0x6580), kPulseWidth);
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveMessage, HandsOverAMessageThatOutlivesTheChannel) {
  std::optional<orbIO> other(std::in_place);
  line_.deliver(kAck);
  const std::unique_ptr<ORBMessage> reply(other->ReceiveMessage(0x8300, 2));
  other.reset();
  ASSERT_NE(reply, nullptr);
  EXPECT_EQ(packetOf(*reply), kAck);
}

TEST_F(ReceiveMessage, FindsAReplySplitAnywhereOnTheReadThatCompletesIt) {
  for (long split = 1; split <= 7; ++split) {
    calls_.forget();
    deliverInTwo(kAck, split);
    EXPECT_EQ(receive(channel_, 0x8300), kAck) << "split at " << split;
    EXPECT_EQ(reads(), 2u);
    EXPECT_TRUE(line_.isOver());
  }
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveMessage, FindsALongReplySplitAnywhere) {
  for (long split = 1; split <= 11; ++split) {
    deliverInTwo(kPulseWidth, split);
    EXPECT_EQ(receive(channel_, 0x6580), kPulseWidth) << "split at " << split;
    EXPECT_TRUE(line_.isOver());
  }
}

TEST_F(ReceiveMessage, FindsAReplyThatComesByteByByte) {
  for (const unsigned char byte : kPulseWidth) {
    line_.deliver({byte});
  }
  EXPECT_EQ(receive(channel_, 0x6580), kPulseWidth);
  EXPECT_EQ(reads(), 12u) << "the last end byte is not waited for";
}

TEST_F(ReceiveMessage, SkipsNoiseBeforeAndBetweenPackets) {
  line_.deliver(join({noise(37), kRefusal, {'$', 'G', 'N', 0x0D, 0x0A}, kPulseWidth}));
  line_.deliver(join({{0x00, 0xA1, 0xA0, 0x00}, kAck}));
  EXPECT_EQ(receive(channel_, 0x8300), kAck);
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveMessage, PassesOverOtherMessages) {
  line_.deliver(join({kRefusal, kPulseWidth}));
  line_.deliver(kOutputMode);
  line_.deliver(join({kAck, kRefusal}));
  EXPECT_EQ(receive(channel_, 0x8300), kAck);
  EXPECT_EQ(reads(), 3u);
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveMessage, PassesOverMessagesThatItDoesNotKnow) {
  line_.deliver(join({kUnknown, kAck}));
  EXPECT_EQ(receive(channel_, 0x8300), kAck);
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveMessage, ReturnsAnOutputModeReportAtOnce) {
  line_.deliver(kOutputMode);
  EXPECT_EQ(receive(channel_, 0xC300), kOutputMode) << "it counts as unknown, but not as errored";
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveMessage, ReturnsTheLaterOfTwoCopies) {
  line_.deliver(join({kAck, kOtherAck}));
  EXPECT_EQ(receive(channel_, 0x8300), kOtherAck);
}

TEST_F(ReceiveMessage, MatchesIdAndSubId) {
  const struct {
    Bytes delivered;
    unsigned short awaited;
  } cases[] = {{kPulseWidth, 0x6581}, {kRefusal, 0x8300}};
  for (const auto& [delivered, awaited] : cases) {
    clock_.passSeconds({0, 2});
    line_.deliver(delivered);
    EXPECT_EQ(receive(channel_, awaited), kNothing) << awaited;
  }
  EXPECT_EQ(standardError(), std::string(kTimedOut) + kTimedOut);
}

TEST_F(ReceiveMessage, TakesAnAcknowledgementForNoRefusal) {
  clock_.passSeconds({0, 1, 2});
  line_.deliver(kAck);
  line_.deliver(noise(1));
  EXPECT_EQ(receive(channel_, 0x8400), kNothing);
  EXPECT_EQ(reads(), 2u);
  EXPECT_EQ(standardError(), kTimedOut);
}

TEST_F(ReceiveMessage, KeepsForTheNextWaitWhatCameWithTheReply) {
  line_.deliver(join({kAck, kPulseWidth}));
  EXPECT_EQ(receive(channel_, 0x8300), kAck);
  line_.deliver(noise(1));
  EXPECT_EQ(receive(channel_, 0x6580), kPulseWidth);
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveMessage, KeepsNothingOfAWaitThatEndedInATimeOut) {
  clock_.passSeconds({0, 2});
  line_.deliver(kPulseWidth);
  EXPECT_EQ(receive(channel_, 0x8300), kNothing);
  clock_.passSeconds({0, 2});
  line_.deliver(kAck);
  EXPECT_EQ(receive(channel_, 0x6580), kNothing);
}

// Each round lists again all that is in the buffer, and what an earlier round listed is emptied:
// of the pulse width that came before the limit, one copy stays for the next wait, and not two.
TEST_F(ReceiveMessage, KeepsOneCopyOfWhatCameWithAReplyThatWasTakenAtTheLimit) {
  clock_.passSeconds({0, 0, 2});
  line_.deliver(join({kBadAck, kAck, kPulseWidth}));
  line_.deliver(kOtherAck);
  EXPECT_EQ(receive(channel_, 0x8300), kOtherAck);
  for (const Bytes& expected : {kPulseWidth, kNothing}) {
    clock_.passSeconds({0, 2});
    line_.deliver(noise(1));
    EXPECT_EQ(receive(channel_, 0x6580), expected);
  }
}

// The limit

TEST_F(ReceiveMessage, EndsOnTheTickOfTheLimit) {
  clock_.passSeconds({0, 0, 1, 1, 2});
  for (int i = 0; i < 4; ++i) {
    line_.deliver(noise(3));
  }
  EXPECT_EQ(receive(channel_, 0x8300, 2), kNothing);
  EXPECT_TRUE(line_.isOver());
  EXPECT_EQ(reads(), 4u);
  EXPECT_EQ(standardError(), kTimedOut);
}

TEST_F(ReceiveMessage, EndsWhenTheClockHasPassedTheLimit) {
  clock_.passSeconds({0, 3600});
  line_.deliver(noise(3));
  EXPECT_EQ(receive(channel_, 0x8300, 5), kNothing);
  EXPECT_EQ(standardError(), kTimedOut);
}

TEST_F(ReceiveMessage, LooksForTheReplyBeforeItLooksAtTheClock) {
  clock_.passSeconds({0, 1, 100});
  line_.deliver(noise(3));
  line_.deliver(kAck);
  EXPECT_EQ(receive(channel_, 0x8300, 2), kAck);
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveMessage, EndsAtTheFirstLookAtTheClockWithoutTimeToWait) {
  for (const int timeout : {0, -1, INT_MIN}) {
    line_.deliver(kRefusal);
    calls_.forget();
    EXPECT_EQ(receive(channel_, 0x8300, timeout), kNothing) << timeout;
    EXPECT_THAT(calls_.readSizes(), ElementsAre(1024));
  }
  EXPECT_EQ(standardError(), std::string(kTimedOut) + kTimedOut + kTimedOut);
}

TEST_F(ReceiveMessage, ReturnsAReplyAtOnceWithoutTimeToWait) {
  for (const int timeout : {0, -1, INT_MIN}) {
    line_.deliver(kAck);
    EXPECT_EQ(receive(channel_, 0x8300, timeout), kAck) << timeout;
  }
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveMessage, TakesTimesWhoseBufferDoesNotFitIntoTheNumber) {
  for (const int timeout : {1 << 22, INT_MAX}) {
    line_.deliver(kAck);
    EXPECT_EQ(receive(channel_, 0x8300, timeout), kAck) << timeout;
  }
}

// The wait for bytes

TEST_F(ReceiveMessage, WaitsForBytesWithoutLookingAtTheClock) {
  clock_.passSeconds({0, 1000});
  line_.pause(100);
  line_.deliver(kAck);
  EXPECT_EQ(receive(channel_, 0x8300, 2), kAck);
  EXPECT_EQ(reads(), 101u);
  EXPECT_EQ(clock_.readings(), 1);
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveMessage, DoesNotReturnFromASilentLine) {
  clock_.passSeconds({0, 0, 1000});
  line_.deliver(noise(3));
  line_.pause(100);
  EXPECT_THROW(receive(channel_, 0x8300, 2), LineStaysSilent);
  EXPECT_EQ(reads(), 102u);
  EXPECT_EQ(clock_.readings(), 2) << "at the start, and when bytes had come";
}

TEST_F(ReceiveMessage, GoesOnAfterReadsThatFail) {
  line_.deliver({kAck.begin(), kAck.begin() + 4});
  line_.fail(EINTR);
  line_.fail(EIO);
  line_.fail(0);
  line_.deliver({kAck.begin() + 4, kAck.end()});
  EXPECT_EQ(receive(channel_, 0x8300), kAck);
  EXPECT_EQ(clock_.readings(), 2);
  EXPECT_EQ(standardError(), "");
}

// A bad checksum

TEST_F(ReceiveMessage, RunsToTheLimitAfterABadChecksum) {
  clock_.passSeconds({0, 0, 1, 2});
  line_.deliver(join({kBadAck, kAck}));
  line_.deliver(noise(2));
  line_.deliver(noise(2));
  EXPECT_EQ(receive(channel_, 0x8300), kAck);
  EXPECT_TRUE(line_.isOver());
  EXPECT_EQ(standardError(), kTimedOut);
}

TEST_F(ReceiveMessage, ReturnsTheNewestCopyAfterABadChecksum) {
  clock_.passSeconds({0, 0, 1, 2});
  line_.deliver(join({kBadAck, kAck}));
  line_.deliver(kOtherAck);
  line_.deliver(kRefusal);
  EXPECT_EQ(receive(channel_, 0x8300), kOtherAck);
  EXPECT_EQ(standardError(), kTimedOut);
}

TEST_F(ReceiveMessage, TakesAReplyThatComesAtTheLimitAfterABadChecksum) {
  clock_.passSeconds({0, 0, 2});
  line_.deliver(kBadAck);
  line_.deliver(kOtherAck);
  EXPECT_EQ(receive(channel_, 0x8300), kOtherAck);
  EXPECT_EQ(standardError(), kTimedOut);
}

TEST_F(ReceiveMessage, ReturnsNothingWhenOnlyABadReplyCame) {
  clock_.passSeconds({0, 2});
  line_.deliver(kBadAck);
  EXPECT_EQ(receive(channel_, 0x8300), kNothing);
  EXPECT_EQ(standardError(), kTimedOut);
}

TEST_F(ReceiveMessage, RunsToTheLimitInLaterWaitsOfTheChannelToo) {
  clock_.passSeconds({0, 2});
  line_.deliver(kBadAck);
  EXPECT_EQ(receive(channel_, 0x8300), kNothing);
  clock_.passSeconds({0, 0, 2});
  line_.deliver(kAck);
  line_.deliver(noise(1));
  EXPECT_EQ(receive(channel_, 0x8300), kAck);
  EXPECT_TRUE(line_.isOver());
  EXPECT_EQ(standardError(), std::string(kTimedOut) + kTimedOut);
}

TEST_F(ReceiveMessage, StartsAfreshOnANewChannel) {
  clock_.passSeconds({0, 2});
  line_.deliver(kBadAck);
  EXPECT_EQ(receive(channel_, 0x8300), kNothing);
  orbIO other;
  line_.deliver(kAck);
  EXPECT_EQ(receive(other, 0x8300), kAck);
  EXPECT_EQ(standardError(), kTimedOut) << "of the first channel";
}

// Memory

TEST_F(ReceiveMessage, ReleasesTheCopiesThatItDoesNotReturn) {
  const long before = liveAllocations();
  {
    clock_.passSeconds({0, 0, 0, 0, 2});
    orbIO channel;
    for (int round = 0; round < 4; ++round) {
      line_.deliver(join({kBadAck, kAck, kRefusal, kOtherAck}));
    }
    const std::unique_ptr<ORBMessage> reply(channel.ReceiveMessage(0x8300, 2));
    EXPECT_NE(reply, nullptr);
    clock_.passSeconds({0});
  }
  EXPECT_EQ(liveAllocations(), before);
}

TEST_F(ReceiveMessage, ReleasesWhatItListedWhenItReturnsNothing) {
  const long before = liveAllocations();
  {
    clock_.passSeconds({0, 0, 2});
    orbIO channel;
    line_.deliver(join({kAck, kRefusal, kOtherAck}));
    line_.deliver(kPulseWidth);
    EXPECT_EQ(channel.ReceiveMessage(0x8080, 2), nullptr);
    clock_.passSeconds({0});
  }
  EXPECT_EQ(liveAllocations(), before);
}

TEST_F(ReceiveMessage, ReportsThatMemoryRanOutAndLosesNone) {
  const long before = liveAllocations();
  int failures = 0;
  for (bool ranOut = true; ranOut;) {
    orbIO channel;
    line_.deliver(join({kRefusal, kAck}));
    try {
      const FailingAllocation failing(failures + 1);
      delete channel.ReceiveMessage(0x8300, 2);
      ranOut = false;
    } catch (const std::bad_alloc&) {
      ++failures;
      // Where the line was not read, the next round's channel drops what waits.
    }
    if (!line_.isOver()) {
      std::array<unsigned char, 32> rest;
      channel.ReadFromUART(rest.data(), rest.size());
    }
  }
  EXPECT_GE(failures, 5) << "the buffer, and two messages with their packets";
  EXPECT_EQ(liveAllocations(), before);
}

}  // namespace
}  // namespace orb::test
