#pragma once

#include <chrono>
#include <vector>

namespace orb::sim {

/// A place at a time.
struct Waypoint {
  std::chrono::milliseconds at{0};  ///< since the simulation began, by the receiver's clock
  double latitude = 0;              ///< degrees
  double longitude = 0;             ///< degrees
  double altitude = 0;              ///< metres above the ellipsoid
};

/// The antenna's way, straight from waypoint to waypoint. Without waypoints it stands where
/// Navigation says.
struct Track {
  std::vector<Waypoint> waypoints;  ///< in order of time
  bool repeats = false;             ///< at the end, it begins anew; otherwise the antenna stops
};

}  // namespace orb::sim
