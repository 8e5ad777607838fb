#include "model/motion.h"

#include <algorithm>
#include <cmath>

namespace orb::sim {
namespace {

using std::chrono::milliseconds;
using Seconds = std::chrono::duration<double>;

Place placeOf(const Waypoint& waypoint) {
  return {waypoint.latitude, waypoint.longitude, waypoint.altitude};
}

/// The shorter way round, between -180 and 180 degrees.
double longitudeBetween(double from, double to) { return std::remainder(to - from, 360.0); }

Motion between(const Waypoint& from, const Waypoint& to, milliseconds now) {
  const double seconds = Seconds(to.at - from.at).count();
  const double share = Seconds(now - from.at).count() / seconds;
  const double north = to.latitude - from.latitude;
  const double east = longitudeBetween(from.longitude, to.longitude);
  const double up = to.altitude - from.altitude;

  const Place place{from.latitude + share * north,
                    std::remainder(from.longitude + share * east, 360.0),
                    from.altitude + share * up};
  const EastNorthUp scale = metresPerDegree(place);
  return {place, {east * scale.east / seconds, north * scale.north / seconds, up / seconds}};
}

Motion along(const Track& track, milliseconds now) {
  const std::vector<Waypoint>& waypoints = track.waypoints;
  const milliseconds end = waypoints.back().at;
  if (track.repeats && end > milliseconds{0}) {
    now %= end;
  }
  const auto next = std::upper_bound(
      waypoints.begin(), waypoints.end(), now,
      [](milliseconds time, const Waypoint& waypoint) { return time < waypoint.at; });
  if (next == waypoints.begin()) {
    return {placeOf(waypoints.front()), {}};
  }
  if (next == waypoints.end()) {
    return {placeOf(waypoints.back()), {}};
  }
  return between(*(next - 1), *next, now);
}

}  // namespace

Place placeOf(const Navigation& navigation) {
  return {navigation.latitude / 1e7, navigation.longitude / 1e7,
          navigation.ellipsoidAltitude / 100.0};
}

Motion antennaMotion(const State& state) {
  return state.track.waypoints.empty() ? Motion{placeOf(state.navigation), {}}
                                       : along(state.track, state.sinceBeginning);
}

}  // namespace orb::sim
