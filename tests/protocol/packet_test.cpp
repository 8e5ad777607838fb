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

// The data end at an inaccessible page, so that each length has another alignment.
TEST(PacketChecksum, IsTheExclusiveOrOfAllBytesAndReadsNoOther) {
  for (unsigned long length = 0; length <= 24; ++length) {
    unsigned int sum = 0;
    Bytes bytes;
    while (bytes.size() < length) {
      bytes.push_back(static_cast<unsigned char>(1 + 37 * bytes.size()));
      sum ^= bytes.back();
    }
    GuardedBytes data(bytes);
    EXPECT_EQ(orbComputeChecksum(data.data(), length), sum) << length;
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

TEST(PacketLength, IsBigEndian) {
  EXPECT_EQ(orbGetLengthFromData(hex("01 04").data()), 260);
  EXPECT_EQ(orbGetLengthFromData(hex("FF 80").data()), 65408);
  Bytes packet = untouched(6);
  orbPutLengthIntoPacket(packet.data(), 0xFE01);
  EXPECT_EQ(packet, hex("EE EE FE 01 EE EE"));
}

TEST(PacketChecksum, IsReadAsItStands) {
  EXPECT_EQ(orbGetChecksumFromData(hex("F7").data()), 0xF7);
}

TEST(PacketId, HasASubIdFrom62To6F) {
  for (unsigned int id = 0; id <= 0xFF; ++id) {
    const unsigned char field[] = {static_cast<unsigned char>(id), 0x05};
    const ORBMsgId read = orbGetMsgIdFromData(field);
    EXPECT_EQ(read.id, id);
    EXPECT_EQ(read.subId, id >= 0x62 && id <= 0x6F ? 5 : 0) << "id " << id;
  }
}

TEST(PacketId, IsOneByteWhereItCarriesNoSubId) {
  GuardedBytes field{{0x83}};
  EXPECT_EQ(orbGetMsgIdFromData(field.data()).id, 0x83);
}

TEST(PacketId, ConvertsToOneNumberAndBack) {
  EXPECT_EQ(orbConvertMsgIdStructToType({0x83, 0x00}), 0x8300);
  EXPECT_EQ(orbConvertMsgIdStructToType({0x65, 0x01}), 0x6501);
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

TEST(PacketPayload, GoesAfterTheIdOrTheSubId) {
  const struct {
    ORBMsgId id;
    const char* source;  ///< null: none
    unsigned short length;
    const char* packet;
  } rows[] = {{kWithoutSubId, "11 22 33", 3, "EE EE EE EE EE 11 22 33 EE"},
              {kWithSubId, "11 22", 2, "EE EE EE EE EE EE 11 22 EE"},
              {kWithoutSubId, "11", 1, "EE EE EE EE EE 11 EE EE EE"},
              {kWithSubId, "11", 1, "EE EE EE EE EE EE 11 EE EE"},
              {kWithoutSubId, "11 22", 0, "EE EE EE EE EE EE EE EE EE"},
              {kWithSubId, "11 22", 0, "EE EE EE EE EE EE EE EE EE"},
              {kWithoutSubId, nullptr, 2, "EE EE EE EE EE EE EE EE EE"},
              {kWithSubId, nullptr, 2, "EE EE EE EE EE EE EE EE EE"}};
  for (const auto& [id, source, length, expected] : rows) {
    Bytes packet = untouched(9);
    const Bytes bytes = source != nullptr ? hex(source) : Bytes{};
    orbPutPayloadIntoPacket(packet.data(), source != nullptr ? bytes.data() : nullptr, length, id);
    EXPECT_EQ(packet, hex(expected));
  }
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

// The fields overwrite what the payload's surplus bytes left.
TEST(Packet, IsWrittenFieldByField) {
  const struct {
    ORBMessageMsgValue type;
    unsigned short length;
    const char* source;  ///< with no byte more than the payload's length; null: none
    const char* packet;
  } rows[] = {{0x0200, 2, "01 FF", "A0 A1 00 02 02 01 03 0D 0A"},
              {0x6580, 6, "00 98 96 80 FF FF", "A0 A1 00 06 65 80 00 98 96 80 6B 0D 0A"},
              {0x6502, 2, nullptr, "A0 A1 00 02 65 02 67 0D 0A"}};
  for (const auto& [type, length, source, expected] : rows) {
    Bytes packet(length + 7ul, 0x00);
    GuardedBytes bytes(source != nullptr ? hex(source) : Bytes{});
    const ORBMsgId id = orbConvertClassIdTypeToStruct(type);
    orbPutStsIntoPacket(packet.data());
    orbPutLengthIntoPacket(packet.data(), length);
    orbPutMsgIdIntoPacket(packet.data(), id);
    orbPutPayloadIntoPacket(packet.data(), source != nullptr ? bytes.data() : nullptr, length, id);
    orbPutChecksumIntoPacket(packet.data(), length);
    orbPutEtsIntoPacket(packet.data(), length);
    EXPECT_EQ(packet, hex(expected));
  }
}

}  // namespace
}  // namespace orb::test
