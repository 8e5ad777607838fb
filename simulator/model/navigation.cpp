#include "model/navigation.h"

#include <array>
#include <cmath>
#include <numbers>

#include "model/body.h"
#include "model/message_ids.h"
#include "orb-sim/frame.h"

namespace orb::sim {
namespace {

constexpr double kUnitsPerDegree = 1e7;
constexpr double kCentimetresPerMetre = 100;

/// Earth-centred, earth-fixed position in centimetres, on the WGS 84 ellipsoid.
std::array<std::int32_t, 3> earthFixed(const Navigation& navigation) {
  constexpr double kSemiMajorAxis = 6378137.0;  // metres
  constexpr double kFlattening = 1 / 298.257223563;
  constexpr double kEccentricitySquared = kFlattening * (2 - kFlattening);
  constexpr double kRadiansPerDegree = std::numbers::pi / 180;

  const double latitude = navigation.latitude / kUnitsPerDegree * kRadiansPerDegree;
  const double longitude = navigation.longitude / kUnitsPerDegree * kRadiansPerDegree;
  const double altitude = navigation.ellipsoidAltitude / kCentimetresPerMetre;
  const double sine = std::sin(latitude);
  const double normal = kSemiMajorAxis / std::sqrt(1 - kEccentricitySquared * sine * sine);
  const double equatorial = (normal + altitude) * std::cos(latitude);

  const auto centimetres = [](double metres) {
    return static_cast<std::int32_t>(std::lround(metres * kCentimetresPerMetre));
  };
  return {centimetres(equatorial * std::cos(longitude)),
          centimetres(equatorial * std::sin(longitude)),
          centimetres((normal * (1 - kEccentricitySquared) + altitude) * sine)};
}

}  // namespace

Bytes navigationData(const State& state) {
  constexpr std::array<std::int32_t, 3> kStandingStill{};  // velocity, centimetres per second
  const Navigation& navigation = state.navigation;
  BodyWriter body;
  body.u8(navigation.fixMode)
      .u8(navigation.satellites)
      .u16(state.time.week)
      .u32(static_cast<std::uint32_t>(state.time.timeOfWeek.count() / 10))
      .i32(navigation.latitude)
      .i32(navigation.longitude)
      .i32(navigation.ellipsoidAltitude)
      .i32(navigation.meanSeaLevelAltitude);
  for (const std::uint16_t dop : navigation.dops) {
    body.u16(dop);
  }
  for (const auto& vector : {earthFixed(navigation), kStandingStill}) {
    for (const std::int32_t component : vector) {
      body.i32(component);
    }
  }
  return frame(message::kNavigationData, body.body());
}

}  // namespace orb::sim
