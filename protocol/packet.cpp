#include "orb-gnss/packet.h"

#include <cstdint>
#include <cstring>

#include "protocol/packet_layout.h"

namespace {

// Folds eight bytes at a time.
unsigned char exclusiveOr(const unsigned char* data, std::uint32_t length) {
  std::uint64_t words = 0;
  const unsigned char* const end = data + length;
  for (const unsigned char* const lastWord = end - length % sizeof words; data != lastWord;
       data += sizeof words) {
    std::uint64_t word;
    std::memcpy(&word, data, sizeof word);
    words ^= word;
  }
  words ^= words >> 32;
  words ^= words >> 16;
  words ^= words >> 8;

  auto result = static_cast<unsigned char>(words);
  for (; data != end; ++data) {
    result ^= *data;
  }
  return result;
}

unsigned char highByte(unsigned short value) { return static_cast<unsigned char>(value >> 8); }
unsigned char lowByte(unsigned short value) { return static_cast<unsigned char>(value); }

}  // namespace

unsigned int orbComputeChecksum(const unsigned char* data, unsigned long length) {
  return exclusiveOr(data, static_cast<std::uint32_t>(length));
}

unsigned short orbGetLengthFromData(const unsigned char* lengthField) {
  return static_cast<unsigned short>(lengthField[0] << 8 | lengthField[1]);
}

unsigned char orbGetChecksumFromData(const unsigned char* checksumField) { return *checksumField; }

ORBMsgId orbGetMsgIdFromData(const unsigned char* idField) {
  const unsigned char id = idField[0];
  if (orb::hasSubId(id)) {
    return {id, idField[1]};
  }
  return {id, 0};
}

ORBMsgId orbConvertClassIdTypeToStruct(ORBMessageMsgValue type) {
  return {highByte(type), lowByte(type)};
}

ORBMessageMsgValue orbConvertMsgIdStructToType(ORBMsgId id) {
  return static_cast<ORBMessageMsgValue>(id.id << 8 | id.subId);
}

void orbPutStsIntoPacket(unsigned char* packet) {
  packet[0] = orb::kStartByte1;
  packet[1] = orb::kStartByte2;
}

void orbPutLengthIntoPacket(unsigned char* packet, unsigned short length) {
  packet[orb::kLengthOffset] = highByte(length);
  packet[orb::kLengthOffset + 1] = lowByte(length);
}

void orbPutMsgIdIntoPacket(unsigned char* packet, ORBMsgId id) {
  packet[orb::kPayloadOffset] = id.id;
  if (orb::hasSubId(id.id)) {
    packet[orb::kPayloadOffset + 1] = id.subId;
  }
}

void orbPutPayloadIntoPacket(unsigned char* packet, const unsigned char* source,
                             unsigned short length, ORBMsgId id) {
  if (length == 0 || source == nullptr) {
    return;
  }
  std::memcpy(packet + orb::bodyOffset(id.id), source, length);
}

unsigned int orbPutChecksumIntoPacket(unsigned char* packet, unsigned short length) {
  const unsigned int checksum = orbComputeChecksum(packet + orb::kPayloadOffset, length);
  packet[orb::kPayloadOffset + length] = static_cast<unsigned char>(checksum);
  return checksum;
}

void orbPutEtsIntoPacket(unsigned char* packet, unsigned int length) {
  unsigned char* end = packet + orb::kPayloadOffset + length + 1;
  end[0] = orb::kEndByte1;
  end[1] = orb::kEndByte2;
}

void orbPutMsgIdIntoDataBuffer(unsigned char* buffer, ORBMessageMsgValue type) {
  buffer[0] = highByte(type);
  buffer[1] = lowByte(type);
}
