#include "orb-gnss/packet.h"

#include <cstdint>
#include <cstring>

#include "protocol/packet_fields.h"
#include "protocol/packet_layout.h"

namespace {

unsigned char highByte(unsigned short value) { return static_cast<unsigned char>(value >> 8); }
unsigned char lowByte(unsigned short value) { return static_cast<unsigned char>(value); }

}  // namespace

unsigned int orbComputeChecksum(const unsigned char* data, unsigned long length) {
  return orb::exclusiveOr(data, static_cast<std::uint32_t>(length));
}

unsigned short orbGetLengthFromData(const unsigned char* lengthField) {
  return orb::lengthAt(lengthField);
}

unsigned char orbGetChecksumFromData(const unsigned char* checksumField) { return *checksumField; }

ORBMsgId orbGetMsgIdFromData(const unsigned char* idField) { return orb::idAt(idField); }

ORBMsgId orbConvertClassIdTypeToStruct(ORBMessageMsgValue type) { return orb::idOf(type); }

ORBMessageMsgValue orbConvertMsgIdStructToType(ORBMsgId id) { return orb::typeOf(id); }

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
