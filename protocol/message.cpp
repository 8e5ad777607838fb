#include "orb-gnss/message.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iomanip>
#include <limits>
#include <new>

#include "base/console.h"
#include "orb-gnss/catalogue.h"
#include "protocol/packet_layout.h"

ORBMessage::ORBMessage(ORBMessageMsgValue type, unsigned long payloadLength,
                       const unsigned char* data)
    : id_(orbConvertClassIdTypeToStruct(type)) {
  buildMessage(data, payloadLength);
}

ORBMessage::ORBMessage(ORBMsgId id, const unsigned char* packet, unsigned short payloadLength)
    : id_(id),
      payloadLength_(payloadLength),
      packetLength_(payloadLength + orb::kPacketOverhead),
      packet_(new unsigned char[packetLength_]) {
  const unsigned long copied = packetLength_ - orb::kEndLength;
  std::memcpy(packet_.get(), packet, copied);
  packet_[copied] = orb::kEndByte1;
  packet_[copied + 1] = orb::kEndByte2;
}

ORBMessage::ORBMessage(const ORBMessage& other)
    : id_(other.id_),
      payloadLength_(other.payloadLength_),
      packetLength_(other.packetLength_),
      packet_(new unsigned char[packetLength_]) {
  std::copy_n(other.packet_.get(), packetLength_, packet_.get());
}

ORBMessage::~ORBMessage() = default;

void ORBMessage::buildMessage(const unsigned char* data, unsigned long payloadLength) {
  allocatePacketDataBuffer(payloadLength);
  constructPacket(data, payloadLength);
}

void ORBMessage::allocatePacketDataBuffer(unsigned long payloadLength) {
  if (payloadLength > std::numeric_limits<unsigned long>::max() - orb::kPacketOverhead) {
    throw std::bad_array_new_length();
  }
  packet_ = std::make_unique<unsigned char[]>(payloadLength + orb::kPacketOverhead);
  payloadLength_ = payloadLength;
  packetLength_ = payloadLength + orb::kPacketOverhead;
}

void ORBMessage::constructPacket(const unsigned char* data, unsigned long payloadLength) {
  const auto length = static_cast<unsigned short>(payloadLength);
  unsigned char* packet = packet_.get();
  orbPutStsIntoPacket(packet);
  orbPutLengthIntoPacket(packet, length);
  orbPutMsgIdIntoPacket(packet, id_);
  orbPutPayloadIntoPacket(packet, data, length, id_);
  orbPutChecksumIntoPacket(packet, length);
  orbPutEtsIntoPacket(packet, static_cast<unsigned int>(payloadLength));
}

unsigned short ORBMessage::getMsgSidId() const { return orbConvertMsgIdStructToType(id_); }
unsigned char ORBMessage::getMid() const { return id_.id; }
unsigned char ORBMessage::getSid() const { return id_.subId; }

unsigned long ORBMessage::getPayloadLength() const { return payloadLength_; }
unsigned char* ORBMessage::getPayloadData() { return packet_.get() + orb::kPayloadOffset; }
const unsigned char* ORBMessage::getPayloadData() const {
  return packet_.get() + orb::kPayloadOffset;
}

unsigned long ORBMessage::getPacketLength() const { return packetLength_; }
unsigned char* ORBMessage::getPacketData() { return packet_.get(); }
const unsigned char* ORBMessage::getPacketData() const { return packet_.get(); }

unsigned long ORBMessage::bodyOffset() const { return orb::bodyOffset(id_.id); }

unsigned char ORBMessage::setByte(unsigned long index, unsigned char value) {
  if (index >= payloadLength_) {
    return static_cast<unsigned char>(~value);
  }
  packet_[bodyOffset() + index] = value;
  orbPutChecksumIntoPacket(packet_.get(), static_cast<unsigned short>(payloadLength_));
  return value;
}

unsigned char ORBMessage::getByte(unsigned long index) const {
  return index >= payloadLength_ ? 0 : packet_[bodyOffset() + index];
}

unsigned char ORBMessage::getByteFull(unsigned long index) const { return packet_[index]; }

unsigned char ORBMessage::getChecksum() const { return packet_[packetLength_ - 2]; }

std::string ORBMessage::getMessageDescription() const {
  char numbers[10];
  std::snprintf(numbers, sizeof numbers, "%02X %02X: ", unsigned{id_.id}, unsigned{id_.subId});
  return std::string(numbers) +
         orbGetMessageDescription(id_, static_cast<unsigned short>(payloadLength_));
}

void ORBMessage::showPacket() const {
  std::ostream& out = orb::standardOutput();
  out << orbGetMessageDescription(id_, static_cast<unsigned short>(payloadLength_)) << ' '
      << std::hex << std::uppercase << std::setfill('0');
  for (unsigned long i = 0; i < packetLength_; ++i) {
    out << std::setw(2) << unsigned{packet_[i]} << ' ';
  }
  out << std::dec << std::nouppercase << std::endl;
}
