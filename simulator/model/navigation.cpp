#include "model/navigation.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "model/body.h"
#include "model/message_ids.h"
#include "model/motion.h"
#include "orb-sim/frame.h"

namespace orb::sim {
namespace {

std::array<std::int32_t, 3> inHundredths(const EarthFixed& vector) {
  std::array<std::int32_t, 3> hundredths{};
  std::transform(vector.begin(), vector.end(), hundredths.begin(), [](double component) {
    return static_cast<std::int32_t>(std::lround(component * 100));
  });
  return hundredths;
}

}  // namespace

Bytes navigationData(const State& state, const Solution& solution) {
  const Navigation& navigation = solution.navigation;
  const GpsTime time = reportedTime(state);
  const Place place = placeOf(navigation);
  BodyWriter body;
  body.write(navigation.fixMode, navigation.satellites, time.week,
             static_cast<std::uint32_t>(time.timeOfWeek.count() / 10), navigation.latitude,
             navigation.longitude, navigation.ellipsoidAltitude, navigation.meanSeaLevelAltitude,
             navigation.dops, inHundredths(earthFixed(place)),
             inHundredths(earthFixed(place, solution.velocity)));
  return frame(message::kNavigationData, body.body());
}

}  // namespace orb::sim
