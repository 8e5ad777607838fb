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
#include "support/packets.h"

namespace orb::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_polymorphic_v<ORBMessageBuilder>);

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

/// What becomes of many more single buffers is in reference/explicit_vectors.tsv.
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

TEST_F(MessageBuilder, GoesOnRightAfterTheStartBytesOfAnUnknownPacket) {
  // An acknowledgement starts where the unknown packet, of id 06, has its length field.
  const Bytes longAck =
      join({{0xA0, 0xA1, 0x06, 0x00, 0x83}, Bytes(0x05FF, 0x00), {0x83, 0x0D, 0x0A}});
  update(join({{0xA0, 0xA1}, longAck}));
  EXPECT_EQ(counts(), (Counts{.good = 1, .unknown = 1, .acknowledged = 1}));
  EXPECT_THAT(takeListed(), ElementsAre(longAck));
}

TEST_F(MessageBuilder, IsStoppedByAFalseHeaderThatClaimsMoreThanThereIs) {
  EXPECT_EQ(update(join({kAck, {0xA0, 0xA1, 0xFF, 0xFF, 0x83, 0x00}, kOtherAck, kRefusal})), 8u);
  EXPECT_THAT(takeListed(), ElementsAre(kAck));
}

TEST_F(MessageBuilder, GoesOnAtTheLastByteOfAPacketWithoutSubId) {
  const Bytes withoutLastByte(kAck.begin(), kAck.end() - 1);
  update(join({withoutLastByte, kRefusal}));
  EXPECT_EQ(counts(), (Counts{.good = 2, .acknowledged = 1, .refused = 1}));
}

TEST_F(MessageBuilder, GoesOnAfterAPacketWithSubId) {
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

TEST_F(MessageBuilder, GoesOnNoEarlierThanTheFirstEndByteOfABadPacket) {
  // The bad packet's checksum byte is the start byte A0 of a good packet.
  const Bytes withoutChecksum(kBadAck.begin(), kBadAck.end() - 3);
  update(join({withoutChecksum, kRefusal}));
  EXPECT_EQ(counts(), (Counts{.errored = 1}));
}

TEST_F(MessageBuilder, CountsAnOutputModeReportAgainAtEachRescan) {
  update(kOutputMode);
  update(join({kOutputMode, kBadOutputMode}));
  update(join({kOutputMode, kBadOutputMode, kAck}));
  EXPECT_EQ(counts(), (Counts{.good = 4, .errored = 2, .unknown = 5, .acknowledged = 1}));
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
}  // namespace orb::test
