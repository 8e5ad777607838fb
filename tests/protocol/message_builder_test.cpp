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

Bytes without(std::ptrdiff_t lastBytes, const Bytes& bytes) {
  return {bytes.begin(), bytes.end() - lastBytes};
}

TEST_F(MessageBuilder, GoesOnWhereAPacketHasEnded) {
  // An acknowledgement starts where the unknown packet, of id 06, has its length field.
  const Bytes longAck = hex("A0 A1 06 00 83") + Bytes(0x05FF, 0x00) + hex("83 0D 0A");
  const struct {
    Bytes buffer;
    Counts counts;
    std::vector<Bytes> listed;
  } rows[] = {
      {kAck + kPulseWidth + hex("00 00") + kRefusal + kOtherAck,
       {.good = 4, .acknowledged = 2, .refused = 1},
       {kAck, kPulseWidth, kRefusal, kOtherAck}},
      {hex("A0 A1") + longAck, {.good = 1, .unknown = 1, .acknowledged = 1}, {longAck}},
      // Without sub-id, the last byte of a packet is not looked at; with one, it is passed over,
      // and the refusal's first start byte counts as end byte.
      {without(1, kAck) + kRefusal, {.good = 2, .acknowledged = 1, .refused = 1}, {kAck, kRefusal}},
      {without(1, kPulseWidth) + kRefusal, {.good = 1}, {kPulseWidth}},
      {kPulseWidth + kRefusal, {.good = 2, .refused = 1}, {kPulseWidth, kRefusal}},
      // A false header claims more than there is.
      {kAck + hex("A0 A1 FF FF 83 00") + kOtherAck, {.good = 1, .acknowledged = 1}, {kAck}},
      // A bad packet's checksum byte is the start byte of a good packet.
      {without(3, kBadAck) + kRefusal, {.errored = 1}, {}},
  };
  for (const auto& [buffer, expected, listed] : rows) {
    builder_.resetMessageCounters();
    update(buffer);
    EXPECT_EQ(counts(), expected) << hexText(buffer).substr(0, 80);
    EXPECT_EQ(takeListed(), listed);
  }
}

TEST_F(MessageBuilder, LooksAtNothingBeforeTheBuffer) {
  update(hex("A1") + kAck);
  EXPECT_EQ(counts(), (Counts{.good = 1, .acknowledged = 1}));
}

TEST_F(MessageBuilder, TellsWhereAFalseHeaderHasStoppedIt) {
  EXPECT_EQ(update(kAck + hex("A0 A1 FF FF 83 00") + kOtherAck + kRefusal), 8u);
}

TEST_F(MessageBuilder, CountsAnOutputModeReportAgainAtEachRescan) {
  update(kOutputMode);
  update(kOutputMode + kBadOutputMode);
  update(kOutputMode + kBadOutputMode + kAck);
  EXPECT_EQ(counts(), (Counts{.good = 4, .errored = 2, .unknown = 5, .acknowledged = 1}));
}

TEST_F(MessageBuilder, DoesNotUseTheReplyId) {
  for (const unsigned char replyId : Bytes{0x00, 0x83, 0x84, 0xFF}) {
    update(kAck + kRefusal, replyId);
    EXPECT_THAT(takeListed(), ElementsAre(kAck, kRefusal));
  }
  EXPECT_EQ(counts(), (Counts{.good = 8, .acknowledged = 4, .refused = 4}));
}

TEST_F(MessageBuilder, ResetsAllCounters) {
  update(kAck + kRefusal + kBadAck + hex("00") + kUnknown);
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
