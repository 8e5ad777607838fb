#include "orb-gnss/message_builder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <ostream>
#include <type_traits>
#include <vector>

#include "support/allocations.h"
#include "support/guarded_bytes.h"

namespace {

using orb::test::Bytes;
using orb::test::FailingAllocation;
using orb::test::GuardedBytes;
using orb::test::join;
using orb::test::liveAllocations;
using orb::test::packetOf;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_polymorphic_v<ORBMessageBuilder>);

const Bytes kAck{0xA0, 0xA1, 0x00, 0x02, 0x83, 0x01, 0x82, 0x0D, 0x0A};
const Bytes kOtherAck{0xA0, 0xA1, 0x00, 0x02, 0x83, 0x02, 0x81, 0x0D, 0x0A};
const Bytes kBadAck{0xA0, 0xA1, 0x00, 0x02, 0x83, 0x01, 0x7D, 0x0D, 0x0A};
const Bytes kRefusal{0xA0, 0xA1, 0x00, 0x02, 0x84, 0x01, 0x85, 0x0D, 0x0A};
const Bytes kPulseWidth{0xA0, 0xA1, 0x00, 0x06, 0x65, 0x80, 0x00,
                        0x98, 0x96, 0x80, 0x6B, 0x0D, 0x0A};
const Bytes kUnknown{0xA0, 0xA1, 0x00, 0x02, 0x61, 0x01, 0x60, 0x0D, 0x0A};
const Bytes kOutputMode{0xA0, 0xA1, 0x00, 0x03, 0xC3, 0x01, 0x00, 0xC2, 0x0D, 0x0A};
const Bytes kBadOutputMode{0xA0, 0xA1, 0x00, 0x03, 0xC3, 0x01, 0x00, 0x3D, 0x0D, 0x0A};

struct Counts {
  unsigned int good = 0;
  unsigned int errored = 0;
  unsigned int unknown = 0;
  unsigned int acknowledged = 0;
  unsigned int refused = 0;

  bool operator==(const Counts&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Counts& counts) {
  return out << counts.good << " good, " << counts.errored << " errored, " << counts.unknown
             << " unknown, " << counts.acknowledged << " acknowledged, " << counts.refused
             << " refused";
}

class MessageBuilder : public testing::Test {
 protected:
  // Every scanned buffer ends at a guard page.
  unsigned long update(const Bytes& bytes, unsigned char replyId = 0x83) {
    GuardedBytes buffer(bytes);
    return builder_.update(replyId, buffer.data(), buffer.size());
  }

  Counts counts() const {
    return {builder_.getGoodMessageCount(), builder_.getErroredMessageCount(),
            builder_.getUnknownMessageCount(), builder_.getAckMessageCount(),
            builder_.getNakMessageCount()};
  }

  // Takes the packets of the listed messages, oldest first.
  std::vector<Bytes> takeListed() {
    std::vector<Bytes> packets;
    while (const std::unique_ptr<ORBMessage> message{list_.getMessage()}) {
      packets.push_back(packetOf(*message));
    }
    return packets;
  }

  ORBMessageList list_;
  ORBMessageBuilder builder_{&list_};
};

TEST_F(MessageBuilder, StartsWithAllCountersAtZero) { EXPECT_EQ(counts(), Counts{}); }

TEST_F(MessageBuilder, ChangesNothingForABufferTooShortToHoldAnything) {
  EXPECT_EQ(update({}), 0u);
  EXPECT_EQ(update({0xA0}), 0u);
  EXPECT_EQ(update({0xA0, 0xA1}), 0u);
  EXPECT_EQ(counts(), Counts{});
  EXPECT_TRUE(list_.isEmpty());
}

TEST_F(MessageBuilder, ListsAnAcknowledgement) {
  EXPECT_EQ(update(kAck), 0u);
  EXPECT_EQ(counts(), (Counts{.good = 1, .acknowledged = 1}));
  const std::unique_ptr<ORBMessage> message(list_.getMessage());
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message->getMsgSidId(), 0x8300);
  EXPECT_EQ(message->getPayloadLength(), 2u);
  EXPECT_EQ(message->getMessageDescription(), "83 00: Message Acknowledged");
  EXPECT_EQ(packetOf(*message), kAck);
  EXPECT_TRUE(list_.isEmpty());
}

TEST_F(MessageBuilder, CountsARefusal) {
  EXPECT_EQ(update(kRefusal), 0u);
  EXPECT_EQ(counts(), (Counts{.good = 1, .refused = 1}));
  EXPECT_THAT(takeListed(), ElementsAre(kRefusal));
}

TEST_F(MessageBuilder, ListsAMessageWithASubId) {
  EXPECT_EQ(update(kPulseWidth), 0u);
  EXPECT_EQ(counts(), (Counts{.good = 1}));
  const std::unique_ptr<ORBMessage> message(list_.getMessage());
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message->getMsgSidId(), 0x6580);
  EXPECT_EQ(packetOf(*message), kPulseWidth);
}

// The position is returned when exactly two bytes remain, and when an incomplete packet remains.

TEST_F(MessageBuilder, ReturnsTheLastByteOfAPacketWithoutSubId) {
  EXPECT_EQ(update(join({kAck, {0xA0, 0xA1}})), 8u);
  EXPECT_EQ(update(join({kAck, {0x00}})), 8u);
}

TEST_F(MessageBuilder, ReturnsZeroWhenOneByteOrNoneRemains) {
  EXPECT_EQ(update(kAck), 0u) << "the scan goes on at the packet's last byte";
  EXPECT_EQ(update(join({kAck, {0xA0, 0x00, 0x00}})), 0u) << "a lone start byte takes two";
  EXPECT_EQ(update(kPulseWidth), 0u);
}

TEST_F(MessageBuilder, ReturnsTheEndOfAPacketWithSubId) {
  EXPECT_EQ(update(join({kPulseWidth, {0xA0, 0xA1}})), 13u);
  EXPECT_EQ(update(join({kPulseWidth, {0xA0}})), 0u);
}

TEST_F(MessageBuilder, ReturnsTheFirstEndByteOfABadPacket) { EXPECT_EQ(update(kBadAck), 7u); }

TEST_F(MessageBuilder, ReturnsTheLastPacketHandledBeforeAnIncompleteOne) {
  EXPECT_EQ(update(join({kAck, {0xA0, 0xA1, 0x00, 0x02, 0x83, 0x01, 0x82}})), 8u);
  EXPECT_EQ(update(join({kBadAck, {0xA0, 0xA1, 0x00, 0x02, 0x83, 0x01, 0x82}})), 7u);
  EXPECT_EQ(update(join({kAck, {0xA0, 0xA1, 0x00, 0x02}})), 8u) << "an incomplete header";
}

TEST_F(MessageBuilder, ReturnsZeroForAnIncompletePacketAlone) {
  EXPECT_EQ(update({0xA0, 0xA1, 0x00, 0x02, 0x83, 0x01, 0x82}), 0u);
}

TEST_F(MessageBuilder, SkipsNoiseBeforeAPacket) {
  update(join({{'$', 'G', 'P', 0x0D, 0x0A, 0x00, 0xFF, 0xA1}, kAck}));
  EXPECT_EQ(counts(), (Counts{.good = 1, .acknowledged = 1}));
}

TEST_F(MessageBuilder, LosesAPacketBehindALoneStartByte) {
  update(join({{0xA0}, kAck}));
  EXPECT_EQ(counts(), Counts{}) << "the byte after a lone A0 is not examined";
  update(join({{0xA0, 0xA0}, kAck}));
  EXPECT_EQ(counts(), (Counts{.good = 1, .acknowledged = 1}));
  update(join({{0xA0, 0x00}, kAck}));
  EXPECT_EQ(counts(), (Counts{.good = 2, .acknowledged = 2}));
}

TEST_F(MessageBuilder, LooksAtAHeaderOnceASeventhByteIsThere) {
  update({0xA0, 0xA1, 0x00, 0x02, 0x61, 0x01});
  EXPECT_EQ(counts(), Counts{});
  update({0xA0, 0xA1, 0x00, 0x02, 0x61, 0x01, 0x60});
  EXPECT_EQ(counts(), (Counts{.unknown = 1}));
}

TEST_F(MessageBuilder, CountsAnUnknownId) {
  update(kUnknown);
  EXPECT_EQ(counts(), (Counts{.unknown = 1}));
  EXPECT_TRUE(list_.isEmpty());
}

TEST_F(MessageBuilder, CountsAnUnknownSubId) {
  update({0xA0, 0xA1, 0x00, 0x02, 0x65, 0x7F, 0x1A, 0x0D, 0x0A});
  EXPECT_EQ(counts(), (Counts{.unknown = 1}));
}

TEST_F(MessageBuilder, DoesNotKnowTheIdThatMarksTheEndOfTheCatalogue) {
  update({0xA0, 0xA1, 0x00, 0x02, 0xFF, 0xFF, 0x00, 0x0D, 0x0A});
  EXPECT_EQ(counts(), (Counts{.unknown = 1}));
}

TEST_F(MessageBuilder, FindsAPacketWithinAnUnknownOne) {
  update(join({{0xA0, 0xA1, 0x00, 0x0A, 0x61}, kAck, {0x00, 0x0D, 0x0A}}));
  EXPECT_EQ(counts(), (Counts{.good = 1, .unknown = 1, .acknowledged = 1}));
}

TEST_F(MessageBuilder, GoesOnRightBehindTheStartBytesOfAnUnknownPacket) {
  // An acknowledgement starts where the unknown packet, of id 06, has its length field.
  const Bytes longAck =
      join({{0xA0, 0xA1, 0x06, 0x00, 0x83}, Bytes(0x05FF, 0x00), {0x83, 0x0D, 0x0A}});
  update(join({{0xA0, 0xA1}, longAck}));
  EXPECT_EQ(counts(), (Counts{.good = 1, .unknown = 1, .acknowledged = 1}));
  EXPECT_THAT(takeListed(), ElementsAre(longAck));
}

TEST_F(MessageBuilder, TakesAnyLengthOfAKnownId) {
  const Bytes longAck{0xA0, 0xA1, 0x00, 0x04, 0x83, 0x01, 0x02, 0x03, 0x83, 0x0D, 0x0A};
  const Bytes shortAck{0xA0, 0xA1, 0x00, 0x01, 0x83, 0x83, 0x0D, 0x0A};
  update(longAck);
  update(shortAck);
  EXPECT_EQ(counts(), (Counts{.good = 2, .acknowledged = 2}));
  EXPECT_THAT(takeListed(), ElementsAre(longAck, shortAck));
}

TEST_F(MessageBuilder, TakesTheLongestLength) {
  Bytes packet(0xFFFF + 7, 0x00);
  packet[0] = 0xA0;
  packet[1] = 0xA1;
  packet[2] = packet[3] = 0xFF;
  packet[4] = packet[0xFFFF + 4] = 0x83;
  packet[0xFFFF + 5] = 0x0D;
  packet[0xFFFF + 6] = 0x0A;
  update(packet);
  EXPECT_EQ(counts(), (Counts{.good = 1, .acknowledged = 1}));
  EXPECT_THAT(takeListed(), ElementsAre(packet));
}

TEST_F(MessageBuilder, TakesAnEmptyPayload) {
  const Bytes null{0xA0, 0xA1, 0x00, 0x00, 0x00, 0x0D, 0x0A};
  EXPECT_EQ(update(null), 0u);
  EXPECT_EQ(counts(), (Counts{.good = 1}));
  EXPECT_THAT(takeListed(), ElementsAre(null));
}

TEST_F(MessageBuilder, TakesAnIdForTheChecksumOfAnEmptyPayload) {
  EXPECT_EQ(update({0xA0, 0xA1, 0x00, 0x00, 0x83, 0x0D, 0x0A}), 5u);
  EXPECT_EQ(counts(), (Counts{.errored = 1})) << "the checksum of no bytes is 0, not 83";
}

TEST_F(MessageBuilder, WaitsForTheByteBehindTheChecksum) {
  EXPECT_EQ(update({kAck.begin(), kAck.begin() + 7}), 0u);
  EXPECT_EQ(counts(), Counts{});
  EXPECT_EQ(update({kAck.begin(), kAck.begin() + 8}), 0u);
  EXPECT_EQ(counts(), (Counts{.good = 1, .acknowledged = 1}))
      << "the second end byte is not needed";
  EXPECT_THAT(takeListed(), ElementsAre(kAck));
}

TEST_F(MessageBuilder, TakesAPacketWithSubIdWithoutItsSecondEndByte) {
  EXPECT_EQ(update({kPulseWidth.begin(), kPulseWidth.end() - 1}), 0u);
  EXPECT_EQ(counts(), (Counts{.good = 1}));
  EXPECT_THAT(takeListed(), ElementsAre(kPulseWidth));
}

TEST_F(MessageBuilder, StopsAtEveryIncompletePacket) {
  for (unsigned long length = 0; length + 1 < kPulseWidth.size(); ++length) {
    EXPECT_EQ(update({kPulseWidth.begin(), kPulseWidth.begin() + static_cast<long>(length)}), 0u);
  }
  EXPECT_EQ(counts(), Counts{});
  EXPECT_TRUE(list_.isEmpty());
}

TEST_F(MessageBuilder, IsStoppedByAFalseHeaderThatClaimsMoreThanThereIs) {
  EXPECT_EQ(update(join({kAck, {0xA0, 0xA1, 0xFF, 0xFF, 0x83, 0x00}, kOtherAck, kRefusal})), 8u);
  EXPECT_THAT(takeListed(), ElementsAre(kAck));
}

TEST_F(MessageBuilder, NeverLooksAtTheEndBytes) {
  update({0xA0, 0xA1, 0x00, 0x02, 0x83, 0x01, 0x82, 0x00, 0xFF});
  EXPECT_EQ(counts(), (Counts{.good = 1, .acknowledged = 1}));
  EXPECT_THAT(takeListed(), ElementsAre(kAck)) << "a message has its end bytes all the same";
}

TEST_F(MessageBuilder, GoesOnAtTheLastByteOfAPacketWithoutSubId) {
  const Bytes withoutLastByte(kAck.begin(), kAck.end() - 1);
  update(join({withoutLastByte, kRefusal}));
  EXPECT_EQ(counts(), (Counts{.good = 2, .acknowledged = 1, .refused = 1}));
}

TEST_F(MessageBuilder, GoesOnBehindAPacketWithSubId) {
  const Bytes withoutLastByte(kPulseWidth.begin(), kPulseWidth.end() - 1);
  update(join({withoutLastByte, kRefusal}));
  EXPECT_EQ(counts(), (Counts{.good = 1})) << "the refusal's first start byte counts as end byte";
  update(join({kPulseWidth, kRefusal}));
  EXPECT_EQ(counts(), (Counts{.good = 3, .refused = 1}));
}

TEST_F(MessageBuilder, ListsAllPacketsOfABuffer) {
  update(join({kAck, kPulseWidth, {0x00, 0x00}, kRefusal, kOtherAck}));
  EXPECT_EQ(counts(), (Counts{.good = 4, .acknowledged = 2, .refused = 1}));
  EXPECT_THAT(takeListed(), ElementsAre(kAck, kPulseWidth, kRefusal, kOtherAck));
}

TEST_F(MessageBuilder, FindsTheNewestOfTwoPacketsOfAType) {
  update(join({kAck, kOtherAck}));
  const std::unique_ptr<ORBMessage> newest(list_.findFirstOfMessage(0x8300));
  EXPECT_EQ(packetOf(*newest), kOtherAck);
}

TEST_F(MessageBuilder, ListsNothingForABadChecksum) {
  update(kBadAck);
  EXPECT_EQ(counts(), (Counts{.errored = 1}));
  EXPECT_TRUE(list_.isEmpty());
}

TEST_F(MessageBuilder, CountsABadPacketWithSubId) {
  EXPECT_EQ(update({0xA0, 0xA1, 0x00, 0x02, 0x65, 0x02, 0x66, 0x0D, 0x0A}), 7u);
  EXPECT_EQ(counts(), (Counts{.errored = 1}));
}

TEST_F(MessageBuilder, GoesOnAtTheFirstEndByteOfABadPacket) {
  const Bytes withoutEndBytes(kBadAck.begin(), kBadAck.end() - 2);
  update(join({withoutEndBytes, kRefusal}));
  EXPECT_EQ(counts(), (Counts{.good = 1, .errored = 1, .refused = 1}));
}

TEST_F(MessageBuilder, GoesOnNoEarlierThanTheFirstEndByteOfABadPacket) {
  // The bad packet's checksum byte is the start byte A0 of a good packet.
  const Bytes withoutChecksum(kBadAck.begin(), kBadAck.end() - 3);
  update(join({withoutChecksum, kRefusal}));
  EXPECT_EQ(counts(), (Counts{.errored = 1}));
}

TEST_F(MessageBuilder, DoesNotSeeAPacketWithinABadOne) {
  update(join({{0xA0, 0xA1, 0x00, 0x0A, 0x83}, kAck, {0x00, 0x0D, 0x0A}, kRefusal}));
  EXPECT_EQ(counts(), (Counts{.good = 1, .errored = 1, .refused = 1}));
  EXPECT_THAT(takeListed(), ElementsAre(kRefusal));
}

TEST_F(MessageBuilder, CountsAGoodOutputModeReportAsUnknownToo) {
  update(kOutputMode);
  EXPECT_EQ(counts(), (Counts{.good = 1, .unknown = 1}));
  EXPECT_THAT(takeListed(), ElementsAre(kOutputMode));
}

TEST_F(MessageBuilder, CountsABadOutputModeReportAsUnknownToo) {
  EXPECT_EQ(update(kBadOutputMode), 8u);
  EXPECT_EQ(counts(), (Counts{.errored = 1, .unknown = 1}));
}

TEST_F(MessageBuilder, CountsAnIncompleteOutputModeReportAsUnknown) {
  const auto start = [](long length) {
    return Bytes(kOutputMode.begin(), kOutputMode.begin() + length);
  };
  update(start(6));
  EXPECT_EQ(counts(), Counts{}) << "the header is not complete";
  update(start(7));
  EXPECT_EQ(counts(), (Counts{.unknown = 1}));
  update(start(8));
  EXPECT_EQ(counts(), (Counts{.unknown = 2})) << "the byte behind the checksum is missing";
  update(start(9));
  EXPECT_EQ(counts(), (Counts{.good = 1, .unknown = 3}));
}

TEST_F(MessageBuilder, CountsAnOutputModeReportAgainAtEachRescan) {
  update(kOutputMode);
  update(join({kOutputMode, kBadOutputMode}));
  update(join({kOutputMode, kBadOutputMode, kAck}));
  EXPECT_EQ(counts(), (Counts{.good = 4, .errored = 2, .unknown = 5, .acknowledged = 1}));
}

TEST_F(MessageBuilder, ListsAPacketAgainAtEachRescan) {
  update(kAck);
  update(kAck);
  EXPECT_EQ(counts(), (Counts{.good = 2, .acknowledged = 2}));
  EXPECT_THAT(takeListed(), ElementsAre(kAck, kAck));
}

TEST_F(MessageBuilder, KeepsNothingOfABuffer) {
  update({kAck.begin(), kAck.begin() + 5});
  update({kAck.begin() + 5, kAck.end()});
  EXPECT_EQ(counts(), Counts{});
  update(kAck);
  EXPECT_EQ(counts(), (Counts{.good = 1, .acknowledged = 1}));
}

TEST_F(MessageBuilder, DoesNotUseTheReplyId) {
  for (const unsigned char replyId : Bytes{0x00, 0x83, 0x84, 0xFF}) {
    update(join({kAck, kRefusal}), replyId);
    EXPECT_THAT(takeListed(), ElementsAre(kAck, kRefusal));
  }
  EXPECT_EQ(counts(), (Counts{.good = 8, .acknowledged = 4, .refused = 4}));
}

TEST_F(MessageBuilder, ResetsAllCounters) {
  update(join({kAck, kRefusal, kBadAck, {0x00}, kUnknown}));
  EXPECT_EQ(counts(),
            (Counts{.good = 2, .errored = 1, .unknown = 1, .acknowledged = 1, .refused = 1}));
  builder_.resetMessageCounters();
  EXPECT_EQ(counts(), Counts{});
  EXPECT_THAT(takeListed(), ElementsAre(kAck, kRefusal)) << "the list stays";
}

TEST_F(MessageBuilder, LeavesTheListToItsOwner) {
  {
    ORBMessageBuilder other(&list_);
    other.update(0x83, kAck.data(), kAck.size());
  }
  EXPECT_THAT(takeListed(), ElementsAre(kAck));
}

TEST_F(MessageBuilder, LeavesTheListUnchangedWhenMemoryRunsOut) {
  // Fills up to where the list needs a new block as well: each allocation of a round fails once.
  GuardedBytes packet(kAck);
  unsigned long listed = 0;
  int failures = 0;
  for (int round = 0; round < 300; ++round) {
    for (int number = 1;; ++number) {
      const long before = liveAllocations();
      bool ranOut = false;
      try {
        const FailingAllocation failing(number);
        builder_.update(0x83, packet.data(), packet.size());
      } catch (const std::bad_alloc&) {
        ranOut = true;
      }
      if (!ranOut) {
        break;
      }
      ++failures;
      ASSERT_EQ(liveAllocations(), before) << "the partly built message is released";
      ASSERT_EQ(counts().good, listed);
    }
    ASSERT_EQ(counts().good, ++listed);
  }
  EXPECT_GT(failures, 2 * 300) << "message and packet in each round, and the list's own blocks";
  EXPECT_EQ(takeListed(), std::vector<Bytes>(listed, kAck));
}

}  // namespace
