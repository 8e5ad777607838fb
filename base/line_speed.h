#pragma once

#include <termios.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace orb {

/// Speeds of a line: in baud, and as termios has them.
inline constexpr std::pair<unsigned int, speed_t> kLineSpeeds[] = {
    {4800, B4800},     {9600, B9600},     {19200, B19200},   {38400, B38400},  {57600, B57600},
    {115200, B115200}, {230400, B230400}, {460800, B460800}, {921600, B921600}};

/// The speed that a terminal is set to, in baud; 0 for one that kLineSpeeds has not.
inline unsigned int baudOf(const termios& settings) {
  const speed_t set = ::cfgetospeed(&settings);
  const auto* const found = std::find_if(std::begin(kLineSpeeds), std::end(kLineSpeeds),
                                         [&](const auto& speed) { return speed.second == set; });
  return found == std::end(kLineSpeeds) ? 0 : found->first;
}

/// Returns false, and changes nothing, for a speed that kLineSpeeds has not.
inline bool setBaud(termios& settings, unsigned int baud) {
  const auto* const found = std::find_if(std::begin(kLineSpeeds), std::end(kLineSpeeds),
                                         [&](const auto& speed) { return speed.first == baud; });
  return found != std::end(kLineSpeeds) && ::cfsetispeed(&settings, found->second) == 0 &&
         ::cfsetospeed(&settings, found->second) == 0;
}

}  // namespace orb
