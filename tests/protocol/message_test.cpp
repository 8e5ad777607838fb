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

/// What a message is made of, and its packet. No byte after the data can be read.
struct Row {
  unsigned short type;
  unsigned long length;  ///< of the payload: id, sub-id and body
  const char* data;      ///< null: none
  const char* packet;
};

const Row kRows[] = {
    {0x6502, 2, nullptr, "A0 A1 00 02 65 02 67 0D 0A"},
    {0x6501, 7, nullptr, "A0 A1 00 07 65 01 00 00 00 00 00 64 0D 0A"},
    {0x8300, 2, "01 FF", "A0 A1 00 02 83 01 82 0D 0A"},
    {0xB000, 4, "0A 0B 0C FF", "A0 A1 00 04 B0 0A 0B 0C BD 0D 0A"},
    {0x6580, 6, "00 98 96 80 FF FF", "A0 A1 00 06 65 80 00 98 96 80 6B 0D 0A"},
    {0x1000, 1, "77", "A0 A1 00 01 10 10 0D 0A"},
    {0x6502, 1, "77", "A0 A1 00 01 65 65 0D 0A"},
    // Without an id byte in the payload, the checksum of nothing stands where the id would be.
    {0x0200, 0, nullptr, "A0 A1 00 00 00 0D 0A"},
    {0x6502, 0, "", "A0 A1 00 00 00 0D 0A"},
};

void expectContent(const ORBMessage& message, const Row& row) {
  SCOPED_TRACE(row.packet);
  const Bytes packet = hex(row.packet);
  EXPECT_EQ(packetOf(message), packet);
  EXPECT_EQ(message.getPayloadLength(), row.length);
  EXPECT_EQ(message.getPacketLength(), row.length + 7);
  EXPECT_EQ(message.getMsgSidId(), row.type);
  EXPECT_EQ(message.getMid(), row.type >> 8);
  EXPECT_EQ(message.getSid(), row.type & 0xFF);
  EXPECT_EQ(message.getPayloadData(), message.getPacketData() + 4);
  EXPECT_EQ(message.getChecksum(), 0x0D) << "the first end byte";
  for (unsigned long i = 0; i < packet.size(); ++i) {
    EXPECT_EQ(message.getByteFull(i), packet[i]) << i;
  }
}

TEST(Message, HasItsBodyFromDataOrOfZeros) {
  for (const Row& row : kRows) {
    GuardedBytes data(row.data != nullptr ? hex(row.data) : Bytes{});
    ORBMessage message(row.type, row.length, row.data != nullptr ? data.data() : nullptr);
    expectContent(message, row);
    EXPECT_EQ(message.getPayloadData(), message.getPacketData() + 4) << "to be changed";
    expectContent(ORBMessage(message), row);
  }
}

TEST(Message, KeepsLengthsBeyondSixteenBitsAndSendsTheirLowHalf) {
  const ORBMessage message(0x8300, 0x10002, nullptr);
  EXPECT_EQ(message.getPayloadLength(), 0x10002u);
  EXPECT_EQ(message.getPacketLength(), 0x10009u);
  Bytes start = packetOf(message);
  start.resize(7);
  EXPECT_EQ(start, hex("A0 A1 00 02 83 00 83"));
  EXPECT_EQ(message.getByteFull(0x10007), 0x0D);
  EXPECT_EQ(message.getByteFull(0x10008), 0x0A);
  EXPECT_EQ(message.getChecksum(), 0x0D);
}

// The bound on an index counts id and sub-id, so that the last ones fall on checksum and end bytes.
constexpr unsigned long kMost = std::numeric_limits<unsigned long>::max();

TEST(Message, SetsABodyByteAndItsChecksum) {
  const struct {
    unsigned short type;
    unsigned long length;
    unsigned long index;
    int value;
    int result;  ///< the value, or beyond the payload, its complement
    const char* packet;
  } rows[] = {
      {0x0200, 2, 0, 0x01, 0x01, "A0 A1 00 02 02 01 03 0D 0A"},
      {0x6411, 5, 0, 0xF0, 0xF0, "A0 A1 00 05 64 11 F0 00 00 85 0D 0A"},
      {0x0200, 2, 1, 0x5A, 0x5A, "A0 A1 00 02 02 00 02 0D 0A"},
      {0x6411, 5, 3, 0x5A, 0x5A, "A0 A1 00 05 64 11 00 00 00 75 0D 0A"},
      {0x6411, 5, 4, 0x5A, 0x5A, "A0 A1 00 05 64 11 00 00 00 75 5A 0A"},
      {0x0200, 2, 2, 0x5A, 0xA5, "A0 A1 00 02 02 00 02 0D 0A"},
      {0x0200, 2, 3, 0x00, 0xFF, "A0 A1 00 02 02 00 02 0D 0A"},
      {0x0200, 2, kMost, 0xFF, 0x00, "A0 A1 00 02 02 00 02 0D 0A"},
      {0x6502, 0, 0, 0x5A, 0xA5, "A0 A1 00 00 00 0D 0A"},
  };
  for (const auto& [type, length, index, value, result, packet] : rows) {
    ORBMessage message(type, length, nullptr);
    EXPECT_EQ(message.setByte(index, static_cast<unsigned char>(value)), result) << packet;
    EXPECT_EQ(packetOf(message), hex(packet));
  }
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

TEST(Message, ReadsBodyBytesAndZeroBeyondThePayload) {
  const struct {
    unsigned short type;
    Bytes data;
    Bytes read;  ///< from index 0 on
  } rows[] = {{0xB000, hex("0A 0B 0C FF"), hex("0A 0B 0C BD 00")},
              {0x6488, hex("0A 0B FF FF"), hex("0A 0B ED 0D 00")},
              {0x6502, {}, hex("00")}};
  for (const auto& [type, data, read] : rows) {
    const ORBMessage message(type, data.size(), data.data());
    for (unsigned long i = 0; i < read.size(); ++i) {
      EXPECT_EQ(message.getByte(i), read[i]) << type << ' ' << i;
    }
    EXPECT_EQ(message.getByte(kMost), 0x00);
  }
}

TEST(Message, IsDescribedByItsNumbersAndTheCatalogue) {
  const struct {
    unsigned short type;
    unsigned long length;
    const char* description;
  } rows[] = {
      {0x6501, 7, "65 01: Configure 1PPS pulse width of GNSS receiver "},
      {0x8300, 2, "83 00: Message Acknowledged"},
      {0xC300, 3, "C3 00: 1PPS output mode of the GNSS receiver"},
      {0x6ABC, 2, "6A BC: Unknown message type"},
      // Lengths that the catalogue excludes.
      {0x6501, 8, "65 01: Unknown message type"},
      {0x8300, 3, "83 00: Unknown message type"},
      // The low half of the length counts, and 0 stands for any length.
      {0x8300, 0x10002, "83 00: Message Acknowledged"},
      {0x8300, 0x20000, "83 00: Message Acknowledged"},
  };
  for (const auto& [type, length, description] : rows) {
    EXPECT_EQ(ORBMessage(type, length, nullptr).getMessageDescription(), description) << length;
  }
}

TEST(Message, ShowsItsPacketAsOneLineAndFlushesOnce) {
  CapturedStream out(std::cout);
  ORBMessage(0x6502, 2, nullptr).showPacket();
  EXPECT_EQ(out.text(), "Query 1PPS pulse width of GNSS receiver  A0 A1 00 02 65 02 67 0D 0A \n");
  EXPECT_EQ(out.flushes(), 1);
  EXPECT_EQ(out.flushedText(), out.text());
}

TEST(Message, ShowsAPacketOfUnknownType) {
  CapturedStream out(std::cout);
  ORBMessage(0x8300, 3, nullptr).showPacket();
  EXPECT_EQ(out.text(), "Unknown message type A0 A1 00 03 83 00 00 83 0D 0A \n");
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

TEST(MessageMemory, StaysAsItIsWhenItRunsOutForAnotherPacket) {
  ORBMessage message(kRows[0].type, kRows[0].length, nullptr);
  const FailingAllocation next(1);
  EXPECT_THROW(message.buildMessage(nullptr, 512), std::bad_alloc);
  expectContent(message, kRows[0]);
}

TEST(MessageMemory, RunsOutForLengthsThatDoNotFit) {
  EXPECT_THROW(ORBMessage(0x6502, std::numeric_limits<unsigned long>::max(), nullptr),
               std::bad_alloc);
}

}  // namespace
}  // namespace orb::test
