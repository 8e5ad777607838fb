#include "transport/receive_buffer.h"

#include <algorithm>
#include <cstring>

#include "protocol/packet_layout.h"

namespace orb {

namespace {

constexpr unsigned kBytesPerSecondShift = 10;
constexpr int kSmallestCapacity = 1024;
constexpr unsigned long kLongestPacket = kLongestPayload + kPacketOverhead;

// The shift is one of 32 bits: a time-out of many days wraps, and gets the smallest buffer when
// nothing positive is left.
unsigned long capacityFor(int timeoutSeconds) {
  const auto shifted =
      static_cast<int>(static_cast<unsigned>(timeoutSeconds) << kBytesPerSecondShift);
  return static_cast<unsigned long>(std::max(shifted, kSmallestCapacity));
}

}  // namespace

// Left uninitialised: bytes are read from it only once they have been received.
ReceiveBuffer::ReceiveBuffer(int timeoutSeconds)
    : capacity_(capacityFor(timeoutSeconds)), bytes_(new unsigned char[capacity_]) {}

void ReceiveBuffer::makeRoom() {
  if (space() > 0) {
    return;
  }
  std::memmove(bytes_.get(), end() - kLongestPacket, kLongestPacket);
  size_ = kLongestPacket;
}

}  // namespace orb
