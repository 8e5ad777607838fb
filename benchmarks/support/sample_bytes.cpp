#include "support/sample_bytes.h"

#include <algorithm>
#include <random>
#include <string_view>

#include "orb-gnss/message.h"

namespace orb::bench {

namespace {

constexpr ORBMessageMsgValue kNavigationData = 0xA800;
constexpr unsigned char kStartByte = 0xA0;

}  // namespace

Bytes packets(std::size_t payloadLength, std::size_t length) {
  std::minstd_rand random;
  Bytes bytes;
  while (bytes.size() < length) {
    ORBMessage message(kNavigationData, payloadLength, nullptr);
    for (unsigned long index = 0; index + 1 < payloadLength; ++index) {
      message.setByte(index, static_cast<unsigned char>(random() >> 8) % kStartByte);
    }
    if (message.getByteFull(message.getPacketLength() - 3) == kStartByte) {
      continue;
    }
    bytes.insert(bytes.end(), message.getPacketData(),
                 message.getPacketData() + message.getPacketLength());
  }
  bytes.resize(length);
  return bytes;
}

Bytes text(std::size_t length) {
  constexpr std::string_view kSentence =
      "$GNGGA,101530.00,4717.1134,N,00833.9154,E,1,12,0.7,499.6,M,48.0,M,,*43\r\n";
  Bytes bytes;
  while (bytes.size() < length) {
    bytes.insert(bytes.end(), kSentence.begin(), kSentence.end());
  }
  bytes.resize(length);
  return bytes;
}

Bytes randomBytes(std::size_t length) {
  std::mt19937 random;
  Bytes bytes(length);
  std::generate(bytes.begin(), bytes.end(),
                [&random] { return static_cast<unsigned char>(random()); });
  return bytes;
}

}  // namespace orb::bench
