#include "orb-gnss/message_builder.h"

#include <cstring>
#include <memory>

#include "protocol/catalogue_index.h"
#include "protocol/messages.h"
#include "protocol/packet_fields.h"
#include "protocol/packet_layout.h"

namespace {

// Position of the next byte that may start a packet within [from, to), else `to`. Not for an empty
// range.
unsigned long findStartByte(const unsigned char* buffer, unsigned long from, unsigned long to) {
  // A packet that follows another one, or its last end byte, needs no search.
  if (buffer[from] == orb::kStartByte1) {
    return from;
  }
  if (buffer[from + 1] == orb::kStartByte1) {
    return from + 1;
  }
  const void* found = std::memchr(buffer + from, orb::kStartByte1, to - from);
  return found == nullptr
             ? to
             : static_cast<unsigned long>(static_cast<const unsigned char*>(found) - buffer);
}

bool isChecksumRight(const unsigned char* packet, unsigned short length) {
  const unsigned char* payload = packet + orb::kPayloadOffset;
  return orb::exclusiveOr(payload, length) == payload[length];
}

}  // namespace

ORBMessageBuilder::ORBMessageBuilder(ORBMessageList* list) : list_(list) {}

ORBMessageBuilder::~ORBMessageBuilder() = default;

unsigned long ORBMessageBuilder::update(unsigned char /*replyId*/, const unsigned char* buffer,
                                        unsigned long length) {
  // With fewer bytes than these from the first start byte on, a packet is not examined yet.
  constexpr unsigned long kExaminedLength = 7;

  unsigned long position = 0;
  unsigned long handled = 0;
  while (position + 2 < length) {
    position = findStartByte(buffer, position, length - 2);
    if (position == length - 2) {
      break;
    }
    const unsigned char* packet = buffer + position;
    if (packet[1] != orb::kStartByte2) {
      position += 2;
      continue;
    }
    if (position + kExaminedLength > length) {
      return handled;
    }
    const ORBMsgId id = orb::idAt(packet + orb::kPayloadOffset);
    const unsigned char row = orb::kCatalogueIndex.rowOf(id);
    if (row == orb::CatalogueIndex::kNoRow) {
      ++unknown_;
      position += 2;
      continue;
    }
    const unsigned int alsoUnknown = row == orb::kLastMessage ? 1 : 0;
    const unsigned short payloadLength = orb::lengthAt(packet + orb::kLengthOffset);
    const unsigned long firstEndByte = position + orb::kPayloadOffset + payloadLength + 1;
    if (firstEndByte >= length) {
      unknown_ += alsoUnknown;
      return handled;
    }
    if (isChecksumRight(packet, payloadLength)) {
      listMessage(id, packet, payloadLength);
      position = position + orb::bodyOffset(id.id) + payloadLength + 1;
    } else {
      ++errored_;
      position = firstEndByte;
    }
    handled = position;
    unknown_ += alsoUnknown;
  }
  return position + 2 == length ? handled : 0;
}

void ORBMessageBuilder::listMessage(ORBMsgId id, const unsigned char* packet,
                                    unsigned short payloadLength) {
  std::unique_ptr<ORBMessage> message(new ORBMessage(id, packet, payloadLength));
  list_->AddMessage(message.get());
  static_cast<void>(message.release());  // The list owns it now.

  ++good_;
  const ORBMessageMsgValue type = orb::typeOf(id);
  if (type == orb::message::kAcknowledged) {
    ++acknowledged_;
  } else if (type == orb::message::kRefused) {
    ++refused_;
  }
}

unsigned int ORBMessageBuilder::getGoodMessageCount() const { return good_; }
unsigned int ORBMessageBuilder::getErroredMessageCount() const { return errored_; }
unsigned int ORBMessageBuilder::getUnknownMessageCount() const { return unknown_; }
unsigned int ORBMessageBuilder::getAckMessageCount() const { return acknowledged_; }
unsigned int ORBMessageBuilder::getNakMessageCount() const { return refused_; }

void ORBMessageBuilder::resetMessageCounters() {
  good_ = errored_ = unknown_ = acknowledged_ = refused_ = 0;
}
