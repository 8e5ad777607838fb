#pragma once

#include <array>

namespace orb::sim {

/// A place on the WGS 84 ellipsoid.
struct Place {
  double latitude = 0;   ///< degrees
  double longitude = 0;  ///< degrees
  double altitude = 0;   ///< metres above the ellipsoid
};

/// A distance in metres or a speed in metres per second.
struct EastNorthUp {
  double east = 0;
  double north = 0;
  double up = 0;
};

using EarthFixed = std::array<double, 3>;

constexpr double kRadiansPerDegree = 3.14159265358979323846 / 180;

/// Earth-centred, earth-fixed position in metres.
EarthFixed earthFixed(const Place& place);

/// The same vector along the earth-fixed axes.
EarthFixed earthFixed(const Place& place, const EastNorthUp& vector);

/// Metres to the east and the north that one degree of longitude and of latitude makes.
EastNorthUp metresPerDegree(const Place& place);

}  // namespace orb::sim
