#include "orb-gnss/packet.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/guarded_bytes.h"

namespace orb::test {
namespace {

constexpr unsigned char kUntouched = 0xEE;

constexpr ORBMsgId kWithoutSubId{0x02, 0x00};
constexpr ORBMsgId kWithSubId{0x65, 0x02};

Bytes untouched(unsigned long length) { return Bytes(length, kUntouched); }

TEST(PacketChecksum, OfNoBytesIsZero) {
  const unsigned char byte = 0x65;
  EXPECT_EQ(orbComputeChecksum(&byte, 0), 0u);
}

TEST(PacketChecksum, IsTheExclusiveOrOfAllBytes) {
  const Bytes data{0x65, 0x01};
  EXPECT_EQ(orbComputeChecksum(data.data(), 2), 0x64u);
}

TEST(PacketChecksum, CoversEveryLengthAndAlignment) {
  const Bytes data{0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80,  //
                   0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80,  //
                   0x01, 0x02, 0x04, 0x08};
  const Bytes checksumOfFirst{0x00, 0x01, 0x03, 0x07, 0x0F, 0x1F, 0x3F, 0x7F,  //
                              0xFF, 0xFE, 0xFC, 0xF8, 0xF0, 0xE0, 0xC0, 0x80,  //
                              0x00, 0x01, 0x03, 0x07, 0x0F};
  for (unsigned long shift = 0; shift < 8; ++shift) {
    Bytes shifted(shift, 0x00);
    shifted.insert(shifted.end(), data.begin(), data.end());
    for (unsigned long length = 0; length < checksumOfFirst.size(); ++length) {
      EXPECT_EQ(orbComputeChecksum(shifted.data() + shift, length), checksumOfFirst[length])
          << length << " bytes, shifted by " << shift;
    }
  }
}

TEST(PacketChecksum, ReadsNothingAfterTheData) {
  for (unsigned long length = 0; length < 20; ++length) {
    GuardedBytes data{Bytes(length, 0xFF)};
    EXPECT_EQ(orbComputeChecksum(data.data(), length), length % 2 == 1 ? 0xFFu : 0u);
  }
}

TEST(PacketChecksum, CountsOnlyTheLowHalfOfTheLength) {
  const Bytes data{0x65, 0x01};
  EXPECT_EQ(orbComputeChecksum(data.data(), 0x1'0000'0002), 0x64u);
}

TEST(PacketChecksum, CountsLengthsBeyondSixteenBits) {
  Bytes data(0x10001, 0x00);
  data.back() = 0x5A;
  EXPECT_EQ(orbComputeChecksum(data.data(), data.size()), 0x5Au);
}

TEST(PacketLength, IsReadBigEndian) {
  const Bytes field{0x01, 0x04};
  EXPECT_EQ(orbGetLengthFromData(field.data()), 260);
  const Bytes highBits{0xFF, 0x80};
  EXPECT_EQ(orbGetLengthFromData(highBits.data()), 65408);
}

TEST(PacketLength, IsWrittenBigEndianAfterTheStartBytes) {
  Bytes packet = untouched(6);
  orbPutLengthIntoPacket(packet.data(), 0xFE01);
  EXPECT_EQ(packet, hex("EE EE FE 01 EE EE"));
}

TEST(PacketChecksum, IsReadAsItStands) {
  const unsigned char field = 0xF7;
  EXPECT_EQ(orbGetChecksumFromData(&field), 0xF7);
}

TEST(PacketId, HasASubIdFrom62To6F) {
  const struct {
    unsigned char id;
    unsigned char expectedSubId;
  } cases[] = {{0x61, 0}, {0x62, 5}, {0x63, 5}, {0x64, 5}, {0x65, 5}, {0x66, 5},
               {0x67, 5}, {0x68, 5}, {0x69, 5}, {0x6A, 5}, {0x6B, 5}, {0x6C, 5},
               {0x6D, 5}, {0x6E, 5}, {0x6F, 5}, {0x70, 0}, {0x00, 0}, {0xFF, 0}};
  for (const auto& [id, expectedSubId] : cases) {
    const Bytes field{id, 0x05};
    const ORBMsgId read = orbGetMsgIdFromData(field.data());
    EXPECT_EQ(read.id, id);
    EXPECT_EQ(read.subId, expectedSubId) << "id " << int{id};
  }
}

TEST(PacketId, IsOneByteWhereItCarriesNoSubId) {
  GuardedBytes field{{0x83}};
  EXPECT_EQ(orbGetMsgIdFromData(field.data()).id, 0x83);
}

TEST(PacketId, ConvertsToOneNumber) {
  EXPECT_EQ(orbConvertMsgIdStructToType({0x83, 0x00}), 0x8300);
  EXPECT_EQ(orbConvertMsgIdStructToType({0x65, 0x01}), 0x6501);
}

TEST(PacketId, ConvertsToTwoBytes) {
  const ORBMsgId id = orbConvertClassIdTypeToStruct(0x6501);
  EXPECT_EQ(id.id, 0x65);
  EXPECT_EQ(id.subId, 0x01);
}

TEST(PacketId, HasTwoFormsThatAreEachOthersByteSwap) {
  static_assert(sizeof(ORBMsgId) == 2);
  static_assert(sizeof(ORBMessageMsgValue) == 2);
  const ORBMsgId id{0x65, 0x01};
  unsigned short word = 0;
  std::memcpy(&word, &id, sizeof word);
  EXPECT_EQ(word, 0x0165);
  EXPECT_EQ(orbConvertMsgIdStructToType(id), 0x6501);
}

TEST(PacketId, IsWrittenWithItsSubId) {
  Bytes packet = untouched(7);
  orbPutMsgIdIntoPacket(packet.data(), {0x6F, 0x81});
  EXPECT_EQ(packet, hex("EE EE EE EE 6F 81 EE"));
}

TEST(PacketId, IsWrittenAloneWhereItCarriesNoSubId) {
  for (const unsigned char id : Bytes{0x61, 0x70}) {
    Bytes packet = untouched(6);
    orbPutMsgIdIntoPacket(packet.data(), {id, 0x81});
    EXPECT_EQ(packet, (Bytes{0xEE, 0xEE, 0xEE, 0xEE, id, 0xEE}));
  }
}

TEST(PacketId, IsWrittenIntoADataBufferIdFirst) {
  Bytes buffer = untouched(3);
  orbPutMsgIdIntoDataBuffer(buffer.data(), 0x6501);
  EXPECT_EQ(buffer, hex("65 01 EE"));
}

TEST(PacketStart, IsA0A1) {
  Bytes packet = untouched(3);
  orbPutStsIntoPacket(packet.data());
  EXPECT_EQ(packet, hex("A0 A1 EE"));
}

TEST(PacketPayload, GoesAfterTheId) {
  Bytes packet = untouched(9);
  const Bytes source{0x11, 0x22, 0x33};
  orbPutPayloadIntoPacket(packet.data(), source.data(), 3, kWithoutSubId);
  EXPECT_EQ(packet, hex("EE EE EE EE EE 11 22 33 EE"));
}

TEST(PacketPayload, GoesAfterTheSubId) {
  Bytes packet = untouched(9);
  const Bytes source{0x11, 0x22};
  orbPutPayloadIntoPacket(packet.data(), source.data(), 2, kWithSubId);
  EXPECT_EQ(packet, hex("EE EE EE EE EE EE 11 22 EE"));
}

TEST(PacketPayload, MayBeOneByte) {
  Bytes packet = untouched(8);
  const Bytes source{0x11};
  orbPutPayloadIntoPacket(packet.data(), source.data(), 1, kWithoutSubId);
  EXPECT_EQ(packet, hex("EE EE EE EE EE 11 EE EE"));
  orbPutPayloadIntoPacket(packet.data(), source.data(), 1, kWithSubId);
  EXPECT_EQ(packet, hex("EE EE EE EE EE 11 11 EE"));
}

TEST(PacketPayload, LeavesThePacketUntouchedForNoBytes) {
  Bytes packet = untouched(9);
  const Bytes source{0x11, 0x22};
  orbPutPayloadIntoPacket(packet.data(), source.data(), 0, kWithoutSubId);
  orbPutPayloadIntoPacket(packet.data(), source.data(), 0, kWithSubId);
  EXPECT_EQ(packet, untouched(9));
}

TEST(PacketPayload, LeavesThePacketUntouchedForANullSource) {
  Bytes packet = untouched(9);
  orbPutPayloadIntoPacket(packet.data(), nullptr, 2, kWithoutSubId);
  orbPutPayloadIntoPacket(packet.data(), nullptr, 2, kWithSubId);
  EXPECT_EQ(packet, untouched(9));
}

TEST(PacketChecksum, IsWrittenAfterThePayloadAndReturned) {
  Bytes packet{0xA0, 0xA1, 0x00, 0x02, 0x02, 0x01, kUntouched, kUntouched, kUntouched};
  EXPECT_EQ(orbPutChecksumIntoPacket(packet.data(), 2), 0x03u);
  EXPECT_EQ(packet, hex("A0 A1 00 02 02 01 03 EE EE"));
}

TEST(PacketChecksum, CoversALongPayload) {
  Bytes packet(4 + 300 + 1, 0x00);
  packet[4 + 299] = 0x5A;
  EXPECT_EQ(orbPutChecksumIntoPacket(packet.data(), 300), 0x5Au);
  EXPECT_EQ(packet.back(), 0x5A);
}

TEST(PacketChecksum, OfAnEmptyPayloadIsWrittenWhereThePayloadWouldStart) {
  Bytes packet{0xA0, 0xA1, 0x00, 0x00, 0x02, kUntouched};
  EXPECT_EQ(orbPutChecksumIntoPacket(packet.data(), 0), 0u);
  EXPECT_EQ(packet, hex("A0 A1 00 00 00 EE"));
}

TEST(PacketEnd, IsWrittenAfterTheChecksum) {
  Bytes packet = untouched(10);
  orbPutEtsIntoPacket(packet.data(), 2);
  EXPECT_EQ(packet, hex("EE EE EE EE EE EE EE 0D 0A EE"));
}

TEST(PacketEnd, TakesLengthsBeyondSixteenBits) {
  Bytes packet = untouched(0x10000 + 7);
  orbPutEtsIntoPacket(packet.data(), 0x10000);
  Bytes expected = untouched(0x10000 + 5);
  expected.push_back(0x0D);
  expected.push_back(0x0A);
  EXPECT_EQ(packet, expected);
}

// Writes a packet in the order in which the fields overwrite what the payload's surplus bytes left.
Bytes wholePacket(ORBMessageMsgValue type, unsigned short length, const unsigned char* source) {
  Bytes packet(length + 7ul, 0x00);
  const ORBMsgId id = orbConvertClassIdTypeToStruct(type);
  orbPutStsIntoPacket(packet.data());
  orbPutLengthIntoPacket(packet.data(), length);
  orbPutMsgIdIntoPacket(packet.data(), id);
  orbPutPayloadIntoPacket(packet.data(), source, length, id);
  orbPutChecksumIntoPacket(packet.data(), length);
  orbPutEtsIntoPacket(packet.data(), length);
  return packet;
}

TEST(Packet, HasItsBodyAfterTheId) {
  const Bytes source{0x01, 0xFF};
  EXPECT_EQ(wholePacket(0x0200, 2, source.data()), hex("A0 A1 00 02 02 01 03 0D 0A"));
}

TEST(Packet, HasItsBodyAfterTheSubId) {
  const Bytes source{0x00, 0x98, 0x96, 0x80, 0xFF, 0xFF};
  EXPECT_EQ(wholePacket(0x6580, 6, source.data()), hex("A0 A1 00 06 65 80 00 98 96 80 6B 0D 0A"));
}

TEST(Packet, NeedsNoBody) {
  EXPECT_EQ(wholePacket(0x6502, 2, nullptr), hex("A0 A1 00 02 65 02 67 0D 0A"));
}

TEST(Packet, TakesThePayloadLengthFromItsSourceAndNoByteMore) {
  GuardedBytes source{{0x01, 0xFF}};
  EXPECT_EQ(wholePacket(0x0200, 2, source.data()), hex("A0 A1 00 02 02 01 03 0D 0A"));
}

}  // namespace
}  // namespace orb::test
