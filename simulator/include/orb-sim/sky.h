#pragma once

#include <cstdint>
#include <vector>

namespace orb::sim {

/// The first four in the order of their bits in Settings::constellations.
enum class Constellation : std::uint8_t { Gps, Glonass, Galileo, Beidou, Qzss, Sbas };

/// A satellite above the horizon, as the antenna sees it.
struct Satellite {
  Constellation constellation = Constellation::Gps;  ///< whose it is
  std::uint8_t number = 1;  ///< PRN or slot within its constellation, counted from 1
  double elevation = 45;    ///< degrees above the horizon
  double azimuth = 0;       ///< degrees from north through east
  std::uint8_t cnr = 40;    ///< dB-Hz; 0: too weak to be heard
};

/// The satellites over an open field in Europe: all constellations, a few satellites low or weak.
std::vector<Satellite> ordinarySky();

}  // namespace orb::sim
