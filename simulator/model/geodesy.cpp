#include "model/geodesy.h"

#include <cmath>

namespace orb::sim {
namespace {

constexpr double kSemiMajorAxis = 6378137.0;  // metres
constexpr double kFlattening = 1 / 298.257223563;
constexpr double kEccentricitySquared = kFlattening * (2 - kFlattening);

/// Radius of curvature in the prime vertical.
double normalRadius(double sine) {
  return kSemiMajorAxis / std::sqrt(1 - kEccentricitySquared * sine * sine);
}

}  // namespace

EarthFixed earthFixed(const Place& place) {
  const double latitude = place.latitude * kRadiansPerDegree;
  const double longitude = place.longitude * kRadiansPerDegree;
  const double sine = std::sin(latitude);
  const double normal = normalRadius(sine);
  const double equatorial = (normal + place.altitude) * std::cos(latitude);
  return {equatorial * std::cos(longitude), equatorial * std::sin(longitude),
          (normal * (1 - kEccentricitySquared) + place.altitude) * sine};
}

EarthFixed earthFixed(const Place& place, const EastNorthUp& vector) {
  const double latitude = place.latitude * kRadiansPerDegree;
  const double longitude = place.longitude * kRadiansPerDegree;
  const double outwards = vector.up * std::cos(latitude) - vector.north * std::sin(latitude);
  return {outwards * std::cos(longitude) - vector.east * std::sin(longitude),
          outwards * std::sin(longitude) + vector.east * std::cos(longitude),
          vector.up * std::sin(latitude) + vector.north * std::cos(latitude)};
}

EastNorthUp metresPerDegree(const Place& place) {
  const double latitude = place.latitude * kRadiansPerDegree;
  const double sine = std::sin(latitude);
  const double normal = normalRadius(sine);
  const double meridian =
      normal * (1 - kEccentricitySquared) / (1 - kEccentricitySquared * sine * sine);
  return {(normal + place.altitude) * std::cos(latitude) * kRadiansPerDegree,
          (meridian + place.altitude) * kRadiansPerDegree, 0};
}

}  // namespace orb::sim
