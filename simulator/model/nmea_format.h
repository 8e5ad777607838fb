#pragma once

#include <array>
#include <cstdio>
#include <string>

#include "orb-sim/state.h"

namespace orb::sim {

/// What printf would print, up to 127 characters.
template <typename... Values>
std::string format(const char* pattern, Values... values) {
  std::array<char, 128> text{};
  std::snprintf(text.data(), text.size(), pattern, values...);
  return text.data();
}

/// Puts "$", "*", the checksum and the line end around the fields of a sentence.
std::string nmeaSentence(const std::string& fields);

/// "4822.2740,N,01134.0734,E"
std::string nmeaPosition(const Navigation& navigation);

// The time in UTC; empty fields where the receiver does not know it.
std::string nmeaTimeOfDay(const GpsTime& time);  ///< "000100.000"
std::string nmeaDate(const GpsTime& time);       ///< "080224"
std::string nmeaLongDate(const GpsTime& time);   ///< "08,02,2024"

}  // namespace orb::sim
