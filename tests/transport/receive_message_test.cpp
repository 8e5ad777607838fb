// Waiting for a reply.

#include <gmock/gmock.h>

#include <array>
#include <cerrno>
#include <climits>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "channel_fixture.h"
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

TEST_F(ReceiveMessage, HandsOverAMessageThatOutlivesTheChannel) {
  std::optional<orbIO> other(std::in_place);
  line_.deliver(kAck);
  const std::unique_ptr<ORBMessage> reply(other->ReceiveMessage(0x8300, 2));
  other.reset();
  ASSERT_NE(reply, nullptr);
  EXPECT_EQ(packetOf(*reply), kAck);
}

TEST_F(ReceiveMessage, FindsAReplySplitAnywhereOnTheReadThatCompletesIt) {
  for (const auto& [packet, type] : {std::pair(kAck, 0x8300), {kPulseWidth, 0x6580}}) {
    for (long split = 1; split <= static_cast<long>(packet.size()) - 2; ++split) {
      calls_.forget();
      deliverInTwo(packet, split);
      EXPECT_EQ(receive(channel_, static_cast<unsigned short>(type)), packet) << split;
      EXPECT_EQ(reads(), 2u);
      EXPECT_TRUE(line_.isOver());
    }
  }
  EXPECT_EQ(standardError(), "");
}

TEST_F(ReceiveMessage, FindsAReplyThatComesByteByByte) {
  for (const unsigned char byte : kPulseWidth) {
    line_.deliver({byte});
  }
  EXPECT_EQ(receive(channel_, 0x6580), kPulseWidth);
  EXPECT_EQ(reads(), 12u) << "the last end byte is not waited for";
}

struct OneWait : ChannelTest, testing::WithParamInterface<Wait> {};

TEST_P(OneWait, HasItsOutcome) { expect(GetParam()); }

const Bytes kSentence{'$', 'G', 'N', 0x0D, 0x0A};

// A name, the clock, what each read finds, the reply, whether it times out (default: no), what is
// awaited (default: an acknowledgement).
std::vector<Wait> waits() {
  return {
      {"WithSubId", {0}, {kPulseWidth}, kPulseWidth, false, 0x6580},
      {"AmongNoise",
       {0, 0},
       {noise(37) + kRefusal + kSentence + kPulseWidth, hex("00 A1 A0 00") + kAck},
       kAck},
      {"AmongOtherMessages", {0, 0}, {kRefusal + kPulseWidth, kOutputMode, kAck + kRefusal}, kAck},
      {"AfterAMessageThatIsNotKnown", {0}, {kUnknown + kAck}, kAck},
      // It counts as unknown, but not as errored.
      {"OfAnOutputModeReport", {0}, {kOutputMode}, kOutputMode, false, 0xC300},
      {"OfTwoCopies", {0}, {kAck + kOtherAck}, kOtherAck},
      {"OfAnotherSubId", {0, 2}, {kPulseWidth}, kNothing, true, 0x6581},
      {"OfAnAcknowledgementWithARefusal", {0, 2}, {kRefusal}, kNothing, true},
      {"OfARefusalWithAnAcknowledgement", {0, 1, 2}, {kAck, noise(1)}, kNothing, true, 0x8400},
      // The limit.
      {"OnTheTickOfTheLimit",
       {0, 0, 1, 1, 2},
       {noise(3), noise(3), noise(3), noise(3)},
       kNothing,
       true},
      {"LongAfterTheLimit", {0, 3600}, {noise(3)}, kNothing, true},
      {"BeforeTheClockIsLookedAt", {0, 1, 100}, {noise(3), kAck}, kAck},
      // A bad checksum: the wait runs to the limit.
      {"AfterABadOne", {0, 0, 1, 2}, {kBadAck + kAck, noise(2), noise(2)}, kAck, true},
      {"OfTheNewestAfterABadOne",
       {0, 0, 1, 2},
       {kBadAck + kAck, kOtherAck, kRefusal},
       kOtherAck,
       true},
      {"AtTheLimitAfterABadOne", {0, 0, 2}, {kBadAck, kOtherAck}, kOtherAck, true},
      {"OfABadOneAlone", {0, 2}, {kBadAck}, kNothing, true},
  };
}

INSTANTIATE_TEST_SUITE_P(ReceiveMessage, OneWait, testing::ValuesIn(waits()), nameOf);

TEST_F(ReceiveMessage, KeepsForTheNextWaitWhatCameWithTheReply) {
  line_.deliver(kAck + kPulseWidth);
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
  line_.deliver(kBadAck + kAck + kPulseWidth);
  line_.deliver(kOtherAck);
  EXPECT_EQ(receive(channel_, 0x8300), kOtherAck);
  for (const Bytes& expected : {kPulseWidth, kNothing}) {
    clock_.passSeconds({0, 2});
    line_.deliver(noise(1));
    EXPECT_EQ(receive(channel_, 0x6580), expected);
  }
}

// The limit

TEST_F(ReceiveMessage, EndsAtTheFirstLookAtTheClockWithoutTimeToWait) {
  for (const int timeout : {0, -1, INT_MIN}) {
    line_.deliver(kRefusal);
    calls_.forget();
    EXPECT_EQ(receive(channel_, 0x8300, timeout), kNothing) << timeout;
    EXPECT_THAT(calls_.readSizes(), ElementsAre(1024));
  }
  EXPECT_EQ(standardError(), std::string(kTimedOut) + kTimedOut + kTimedOut);
}

// 2^22 seconds and more have a buffer whose size does not fit into the number.
TEST_F(ReceiveMessage, ReturnsAReplyAtOnceWhateverTheTimeToWait) {
  for (const int timeout : {0, -1, INT_MIN, 1 << 22, INT_MAX}) {
    line_.deliver(kAck);
    EXPECT_EQ(receive(channel_, 0x8300, timeout), kAck) << timeout;
  }
  EXPECT_EQ(standardError(), "");
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
      line_.deliver(kBadAck + kAck + kRefusal + kOtherAck);
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
    line_.deliver(kAck + kRefusal + kOtherAck);
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
    line_.deliver(kRefusal + kAck);
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
