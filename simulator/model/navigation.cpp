#include "model/navigation.h"

#include <cmath>

#include "model/body.h"
#include "model/message_ids.h"
#include "model/motion.h"
#include "orb-sim/frame.h"

namespace orb::sim {
namespace {

void writeInHundredths(BodyWriter& body, const EarthFixed& vector) {
  for (const double component : vector) {
    body.i32(static_cast<std::int32_t>(std::lround(component * 100)));
  }
}

}  // namespace

Bytes navigationData(const State& state, const Solution& solution) {
  const Navigation& navigation = solution.navigation;
  const GpsTime time = reportedTime(state);
  const Place place = placeOf(navigation);
  BodyWriter body;
  body.u8(navigation.fixMode)
      .u8(navigation.satellites)
      .u16(time.week)
      .u32(static_cast<std::uint32_t>(time.timeOfWeek.count() / 10))
      .i32(navigation.latitude)
      .i32(navigation.longitude)
      .i32(navigation.ellipsoidAltitude)
      .i32(navigation.meanSeaLevelAltitude);
  for (const std::uint16_t dop : navigation.dops) {
    body.u16(dop);
  }
  writeInHundredths(body, earthFixed(place));
  writeInHundredths(body, earthFixed(place, solution.velocity));
  return frame(message::kNavigationData, body.body());
}

}  // namespace orb::sim
