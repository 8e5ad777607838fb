#include "support/sample_bytes.h"

#include <algorithm>
#include <random>
#include <string_view>

namespace orb::bench {

namespace {

constexpr unsigned char kStartByte = 0xA0;
constexpr unsigned char kNavigationData = 0xA8;

}  // namespace

Bytes packets(std::size_t payloadLength, std::size_t length) {
  std::minstd_rand random;
  Bytes bytes;
  while (bytes.size() < length) {
    Bytes packet{kStartByte, 0xA1, static_cast<unsigned char>(payloadLength >> 8),
                 static_cast<unsigned char>(payloadLength), kNavigationData};
    unsigned char checksum = kNavigationData;
    for (std::size_t index = 1; index < payloadLength; ++index) {
      packet.push_back(static_cast<unsigned char>(random() >> 8) % kStartByte);
      checksum ^= packet.back();
    }
    if (checksum != kStartByte) {
      packet.insert(packet.end(), {checksum, 0x0D, 0x0A});
      bytes.insert(bytes.end(), packet.begin(), packet.end());
    }
  }
  bytes.resize(length);
  return bytes;
}

Bytes textBytes(std::size_t length) {
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
