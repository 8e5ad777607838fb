#include "orb-gnss/message.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <iostream>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>

#include "support/allocations.h"
#include "support/captured_stream.h"
#include "support/guarded_bytes.h"

namespace orb::test {
namespace {

static_assert(!std::is_default_constructible_v<ORBMessage>);
static_assert(std::is_copy_constructible_v<ORBMessage>);
static_assert(!std::is_copy_assignable_v<ORBMessage>);
static_assert(!std::is_move_assignable_v<ORBMessage>);
static_assert(!std::is_polymorphic_v<ORBMessage>);

TEST(Message, IsAQueryWithoutABody) {
  const ORBMessage message(0x6502, 2, nullptr);
  EXPECT_EQ(packetOf(message), hex("A0 A1 00 02 65 02 67 0D 0A"));
  EXPECT_EQ(message.getPayloadLength(), 2u);
  EXPECT_EQ(message.getPacketLength(), 9u);
  EXPECT_EQ(message.getMid(), 0x65);
  EXPECT_EQ(message.getSid(), 0x02);
  EXPECT_EQ(message.getMsgSidId(), 0x6502);
}

TEST(Message, HasABodyOfZerosWithoutData) {
  const ORBMessage message(0x6501, 7, nullptr);
  EXPECT_EQ(packetOf(message), hex("A0 A1 00 07 65 01 00 00 00 00 00 64 0D 0A"));
}

TEST(Message, TakesItsBodyFromData) {
  const Bytes data{0x01, 0xFF};
  const ORBMessage message(0x8300, 2, data.data());
  EXPECT_EQ(packetOf(message), hex("A0 A1 00 02 83 01 82 0D 0A"));
  EXPECT_EQ(message.getMid(), 0x83);
  EXPECT_EQ(message.getSid(), 0x00);
  EXPECT_EQ(message.getMsgSidId(), 0x8300);
}

TEST(Message, ReadsThePayloadLengthFromDataAndNoByteMore) {
  GuardedBytes data{{0x00, 0x98, 0x96, 0x80, 0xFF, 0xFF}};
  const ORBMessage message(0x6580, 6, data.data());
  EXPECT_EQ(packetOf(message), hex("A0 A1 00 06 65 80 00 98 96 80 6B 0D 0A"));
}

TEST(Message, HasItsPayloadAfterTheLength) {
  ORBMessage message(0x6502, 2, nullptr);
  EXPECT_EQ(message.getPayloadData(), message.getPacketData() + 4);
  const ORBMessage& constant = message;
  EXPECT_EQ(constant.getPayloadData(), constant.getPacketData() + 4);
  EXPECT_EQ(constant.getPayloadData()[0], 0x65);
  EXPECT_EQ(constant.getPayloadData()[1], 0x02);
}

// Without an id byte in the payload, the checksum of nothing stands where the id would be.
TEST(Message, ToleratesAnEmptyPayload) {
  const ORBMessage plain(0x0200, 0, nullptr);
  EXPECT_EQ(packetOf(plain), hex("A0 A1 00 00 00 0D 0A"));
  GuardedBytes nothing{{}};
  const ORBMessage withSubId(0x6502, 0, nothing.data());
  EXPECT_EQ(packetOf(withSubId), hex("A0 A1 00 00 00 0D 0A"));
}

TEST(Message, ToleratesAPayloadOfOneByte) {
  GuardedBytes data{{0x77}};
  const ORBMessage plain(0x1000, 1, data.data());
  EXPECT_EQ(packetOf(plain), hex("A0 A1 00 01 10 10 0D 0A"));
  const ORBMessage withSubId(0x6502, 1, data.data());
  EXPECT_EQ(packetOf(withSubId), hex("A0 A1 00 01 65 65 0D 0A"));
}

TEST(Message, RefusesEveryIndexOfAnEmptyPayload) {
  ORBMessage message(0x6502, 0, nullptr);
  EXPECT_EQ(message.setByte(0, 0x5A), 0xA5);
  EXPECT_EQ(message.getByte(0), 0x00);
  EXPECT_EQ(packetOf(message), hex("A0 A1 00 00 00 0D 0A"));
}

TEST(Message, KeepsLengthsBeyondSixteenBitsAndSendsTheirLowHalf) {
  const ORBMessage message(0x8300, 0x10002, nullptr);
  EXPECT_EQ(message.getPayloadLength(), 0x10002u);
  EXPECT_EQ(message.getPacketLength(), 0x10009u);
  Bytes start = packetOf(message);
  start.resize(7);
  EXPECT_EQ(start, hex("A0 A1 00 02 83 00 83"));
}

TEST(Message, HasItsEndBytesAfterALengthBeyondSixteenBits) {
  const ORBMessage message(0x8300, 0x10002, nullptr);
  EXPECT_EQ(message.getByteFull(0x10007), 0x0D);
  EXPECT_EQ(message.getByteFull(0x10008), 0x0A);
  EXPECT_EQ(message.getChecksum(), 0x0D);
}

TEST(Message, SetsTheFirstBodyByteAfterTheId) {
  ORBMessage message(0x0200, 2, nullptr);
  EXPECT_EQ(message.setByte(0, 1), 1);
  EXPECT_EQ(packetOf(message), hex("A0 A1 00 02 02 01 03 0D 0A"));
}

TEST(Message, SetsTheFirstBodyByteAfterTheSubId) {
  ORBMessage message(0x6411, 5, nullptr);
  EXPECT_EQ(message.setByte(0, 0xF0), 0xF0);
  EXPECT_EQ(packetOf(message), hex("A0 A1 00 05 64 11 F0 00 00 85 0D 0A"));
}

TEST(Message, KeepsItsChecksumValidAfterEveryChange) {
  ORBMessage message(0x6411, 5, nullptr);
  message.setByte(0, 0x01);
  EXPECT_EQ(message.getByteFull(9), 0x74);
  message.setByte(2, 0x80);
  EXPECT_EQ(message.getByteFull(9), 0xF4);
  message.setByte(0, 0x00);
  EXPECT_EQ(message.getByteFull(9), 0xF5);
  EXPECT_EQ(packetOf(message), hex("A0 A1 00 05 64 11 00 00 80 F5 0D 0A"));
}

TEST(Message, AnswersAnIndexBeyondThePayloadWithTheComplement) {
  ORBMessage message(0x0200, 2, nullptr);
  const Bytes before = packetOf(message);
  EXPECT_EQ(message.setByte(2, 0x5A), 0xA5);
  EXPECT_EQ(message.setByte(3, 0x00), 0xFF);
  EXPECT_EQ(message.setByte(std::numeric_limits<unsigned long>::max(), 0xFF), 0x00);
  EXPECT_EQ(packetOf(message), before);
}

TEST(Message, RenewsTheChecksumThatTheLastIndexWithoutSubIdFallsOn) {
  ORBMessage message(0x0200, 2, nullptr);
  EXPECT_EQ(message.setByte(1, 0x5A), 0x5A);
  EXPECT_EQ(packetOf(message), hex("A0 A1 00 02 02 00 02 0D 0A"));
}

TEST(Message, RenewsTheChecksumThatTheLastIndexButOneWithSubIdFallsOn) {
  ORBMessage message(0x6411, 5, nullptr);
  EXPECT_EQ(message.setByte(3, 0x5A), 0x5A);
  EXPECT_EQ(packetOf(message), hex("A0 A1 00 05 64 11 00 00 00 75 0D 0A"));
}

TEST(Message, ChangesTheEndByteThatTheLastIndexWithSubIdFallsOn) {
  ORBMessage message(0x6411, 5, nullptr);
  EXPECT_EQ(message.setByte(4, 0x5A), 0x5A);
  EXPECT_EQ(packetOf(message), hex("A0 A1 00 05 64 11 00 00 00 75 5A 0A"));
}

TEST(Message, ReadsBodyBytesAfterTheId) {
  const Bytes data{0x0A, 0x0B, 0x0C, 0xFF};
  const ORBMessage message(0xB000, 4, data.data());
  EXPECT_EQ(message.getByte(0), 0x0A);
  EXPECT_EQ(message.getByte(1), 0x0B);
  EXPECT_EQ(message.getByte(2), 0x0C);
  EXPECT_EQ(message.getByte(3), 0xBD) << "the checksum, which the bound lets through";
  EXPECT_EQ(message.getByte(4), 0x00);
}

TEST(Message, ReadsBodyBytesAfterTheSubId) {
  const Bytes data{0x0A, 0x0B, 0xFF, 0xFF};
  const ORBMessage message(0x6488, 4, data.data());
  EXPECT_EQ(message.getByte(0), 0x0A);
  EXPECT_EQ(message.getByte(1), 0x0B);
  EXPECT_EQ(message.getByte(2), 0xED) << "the checksum, which the bound lets through";
  EXPECT_EQ(message.getByte(3), 0x0D) << "the first end byte, which the bound lets through";
  EXPECT_EQ(message.getByte(4), 0x00);
}

TEST(Message, ReadsZeroBeyondThePayload) {
  const ORBMessage message(0x6502, 2, nullptr);
  EXPECT_EQ(message.getByte(2), 0x00);
  EXPECT_EQ(message.getByte(std::numeric_limits<unsigned long>::max()), 0x00);
}

TEST(Message, ShowsEveryPacketByte) {
  const ORBMessage message(0x6502, 2, nullptr);
  const Bytes expected{0xA0, 0xA1, 0x00, 0x02, 0x65, 0x02, 0x67, 0x0D, 0x0A};
  for (unsigned long i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(message.getByteFull(i), expected[i]) << "packet byte " << i;
  }
}

TEST(Message, CallsTheFirstEndByteItsChecksum) {
  EXPECT_EQ(ORBMessage(0x6502, 2, nullptr).getChecksum(), 0x0D);
  EXPECT_EQ(ORBMessage(0x8300, 2, nullptr).getChecksum(), 0x0D);
  EXPECT_EQ(ORBMessage(0x0100, 15, nullptr).getChecksum(), 0x0D);
  EXPECT_EQ(ORBMessage(0x0000, 0, nullptr).getChecksum(), 0x0D);
}

TEST(Message, IsDescribedByItsNumbersAndTheCatalogue) {
  EXPECT_EQ(ORBMessage(0x6501, 7, nullptr).getMessageDescription(),
            "65 01: Configure 1PPS pulse width of GNSS receiver ");
  EXPECT_EQ(ORBMessage(0x8300, 2, nullptr).getMessageDescription(), "83 00: Message Acknowledged");
}

TEST(Message, IsDescribedInUpperCase) {
  EXPECT_EQ(ORBMessage(0xC300, 3, nullptr).getMessageDescription(),
            "C3 00: 1PPS output mode of the GNSS receiver");
  EXPECT_EQ(ORBMessage(0x6ABC, 2, nullptr).getMessageDescription(), "6A BC: Unknown message type");
}

TEST(Message, IsOfUnknownTypeWithALengthThatTheCatalogueExcludes) {
  EXPECT_EQ(ORBMessage(0x6501, 8, nullptr).getMessageDescription(), "65 01: Unknown message type");
  EXPECT_EQ(ORBMessage(0x8300, 3, nullptr).getMessageDescription(), "83 00: Unknown message type");
}

TEST(Message, IsDescribedByTheLowHalfOfItsLength) {
  EXPECT_EQ(ORBMessage(0x8300, 0x10002, nullptr).getMessageDescription(),
            "83 00: Message Acknowledged");
  EXPECT_EQ(ORBMessage(0x8300, 0x20000, nullptr).getMessageDescription(),
            "83 00: Message Acknowledged")
      << "a length of 0 stands for any length";
}

TEST(Message, ShowsItsPacketAsOneLine) {
  CapturedStream out(std::cout);
  ORBMessage(0x6502, 2, nullptr).showPacket();
  EXPECT_EQ(out.text(), "Query 1PPS pulse width of GNSS receiver  A0 A1 00 02 65 02 67 0D 0A \n");
}

TEST(Message, ShowsAPacketOfUnknownType) {
  CapturedStream out(std::cout);
  ORBMessage(0x8300, 3, nullptr).showPacket();
  EXPECT_EQ(out.text(), "Unknown message type A0 A1 00 03 83 00 00 83 0D 0A \n");
}

TEST(Message, FlushesTheWholeLineOnceWhenItShowsItsPacket) {
  CapturedStream out(std::cout);
  ORBMessage(0x6502, 2, nullptr).showPacket();
  EXPECT_EQ(out.flushes(), 1);
  EXPECT_EQ(out.flushedText(), out.text());
}

TEST(Message, LeavesTheStreamInDecimalWithTheFillZero) {
  CapturedStream out(std::cout);
  std::cout << std::setfill(' ') << std::hex << std::uppercase;
  ORBMessage(0x6502, 2, nullptr).showPacket();
  EXPECT_EQ(std::cout.fill(), '0');
  EXPECT_EQ(std::cout.flags() & std::ios::basefield, std::ios::dec);
  EXPECT_EQ(std::cout.flags() & std::ios::uppercase, std::ios::fmtflags{});
  std::cout << std::setw(4) << 26;
  EXPECT_TRUE(out.text().ends_with("\n0026")) << out.text();
}

TEST(MessageCopy, IsEqual) {
  const Bytes data{0x0A, 0x0B, 0x0C, 0xFF};
  const ORBMessage original(0xB000, 4, data.data());
  const ORBMessage copy(original);
  EXPECT_EQ(packetOf(copy), hex("A0 A1 00 04 B0 0A 0B 0C BD 0D 0A"));
  EXPECT_EQ(copy.getMsgSidId(), 0xB000);
  EXPECT_EQ(copy.getPayloadLength(), 4u);
  EXPECT_EQ(copy.getPacketLength(), 11u);
}

TEST(MessageCopy, HasAPacketOfItsOwn) {
  ORBMessage original(0x0200, 2, nullptr);
  ORBMessage copy(original);
  EXPECT_NE(copy.getPacketData(), original.getPacketData());
  copy.setByte(0, 1);
  EXPECT_EQ(original.getByte(0), 0);
  original.setByte(0, 2);
  EXPECT_EQ(copy.getByte(0), 1);
}

TEST(MessageCopy, OutlivesItsOriginal) {
  auto original = std::make_unique<ORBMessage>(0x6502, 2, nullptr);
  const ORBMessage copy(*original);
  original.reset();
  EXPECT_EQ(packetOf(copy), hex("A0 A1 00 02 65 02 67 0D 0A"));
}

TEST(MessageMemory, IsReleasedWithTheMessage) {
  const long before = liveAllocations();
  {
    const ORBMessage message(0x6502, 2, nullptr);
    const ORBMessage copy(message);
    EXPECT_EQ(liveAllocations(), before + 2);
  }
  EXPECT_EQ(liveAllocations(), before);
}

TEST(MessageMemory, RunsOutWithTheStandardException) {
  const ORBMessage original(0x6502, 2, nullptr);
  FailingAllocation next(1);
  EXPECT_THROW(ORBMessage(0x6502, 2, nullptr), std::bad_alloc);
  FailingAllocation nextAgain(1);
  EXPECT_THROW(ORBMessage{original}, std::bad_alloc);
}

TEST(MessageMemory, RunsOutForLengthsThatDoNotFit) {
  EXPECT_THROW(ORBMessage(0x6502, std::numeric_limits<unsigned long>::max(), nullptr),
               std::bad_alloc);
}

}  // namespace
}  // namespace orb::test
