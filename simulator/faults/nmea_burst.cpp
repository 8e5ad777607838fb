#include "faults/nmea_burst.h"

#include <array>
#include <cstdio>
#include <string>

namespace orb::sim {
namespace {

constexpr std::array<const char*, 4> kSentences{
    "GPGGA,120000.000,4822.2740,N,01134.0734,E,1,09,0.9,475.9,M,44.2,M,,0000",
    "GPRMC,120000.000,A,4822.2740,N,01134.0734,E,000.0,000.0,010324,,,A",
    "GPGSA,A,3,02,05,07,09,13,15,20,28,30,,,,1.6,0.9,1.3",
    "GPZDA,120000.000,01,03,2024,00,00",
};

std::string sentence(const std::string& fields) {
  unsigned int checksum = 0;
  for (const char c : fields) {
    checksum ^= static_cast<unsigned char>(c);
  }
  std::array<char, 8> end{};
  std::snprintf(end.data(), end.size(), "*%02X\r\n", checksum);
  return "$" + fields + end.data();
}

}  // namespace

Bytes nmeaBurst(std::size_t sentences) {
  Bytes burst;
  for (std::size_t i = 0; i < sentences; ++i) {
    const std::string text = sentence(kSentences[i % kSentences.size()]);
    burst.insert(burst.end(), text.begin(), text.end());
  }
  return burst;
}

}  // namespace orb::sim
