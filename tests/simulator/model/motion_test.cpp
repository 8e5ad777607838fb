#include "model/motion.h"

#include <gtest/gtest.h>

#include <cmath>

#include "receivers.h"

namespace orb::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr double kMillimetre = 1e-3;

void expectNear(const sim::EarthFixed& actual, const sim::EarthFixed& expected, double tolerance) {
  for (std::size_t axis = 0; axis < actual.size(); ++axis) {
    EXPECT_NEAR(actual[axis], expected[axis], tolerance) << "axis " << axis;
  }
}

sim::Waypoint at(seconds time, double latitude, double longitude, double altitude = 0) {
  return {time, latitude, longitude, altitude};
}

sim::State moving(std::vector<sim::Waypoint> waypoints, bool repeats = false) {
  sim::State state;
  state.track = {std::move(waypoints), repeats};
  return state;
}

sim::Motion motionAt(sim::State state, milliseconds time) {
  state.sinceBeginning = time;
  return sim::antennaMotion(state);
}

TEST(EarthFixed, KnowsPlacesOnTheEllipsoid) {
  expectNear(sim::earthFixed({0, 0, 0}), {6378137, 0, 0}, kMillimetre);
  expectNear(sim::earthFixed({0, 90, 10}), {0, 6378147, 0}, kMillimetre);
  expectNear(sim::earthFixed({-90, 0, 0}), {0, 0, -6356752.3142}, kMillimetre);
  expectNear(sim::earthFixed({45, 45, 0}), {3194419.145, 3194419.145, 4487348.409}, kMillimetre);
}

TEST(EarthFixed, TurnsEastNorthAndUp) {
  expectNear(sim::earthFixed({0, 0, 0}, {1, 2, 3}), {3, 1, 2}, kMillimetre);
  expectNear(sim::earthFixed({0, 90, 0}, {1, 2, 3}), {-1, 3, 2}, kMillimetre);
  expectNear(sim::earthFixed({90, 0, 0}, {1, 2, 3}), {-2, 1, 3}, kMillimetre);
}

TEST(Antenna, StandsWhereNavigationSaysWithoutATrack) {
  const sim::Motion motion = motionAt(sim::State{}, seconds(100));
  EXPECT_DOUBLE_EQ(motion.place.latitude, 48.3712345);
  EXPECT_DOUBLE_EQ(motion.place.longitude, 11.5678901);
  EXPECT_DOUBLE_EQ(motion.place.altitude, 520.12);
  EXPECT_EQ(motion.velocity.east, 0);
  EXPECT_EQ(motion.velocity.north, 0);
}

TEST(Antenna, GoesStraightFromWaypointToWaypoint) {
  const sim::State state = moving({at(seconds(10), 0, 0, 100), at(seconds(20), 0, 1, 200)});
  EXPECT_EQ(motionAt(state, seconds(0)).place.longitude, 0);
  EXPECT_EQ(motionAt(state, seconds(0)).velocity.east, 0);
  const sim::Motion half = motionAt(state, seconds(15));
  EXPECT_DOUBLE_EQ(half.place.longitude, 0.5);
  EXPECT_DOUBLE_EQ(half.place.altitude, 150);
  EXPECT_DOUBLE_EQ(half.velocity.up, 10);
  EXPECT_NEAR(half.velocity.east, 2 * M_PI * (6378137 + 150) / 360 / 10, kMillimetre);
  EXPECT_NEAR(half.velocity.north, 0, kMillimetre);
  EXPECT_EQ(motionAt(state, seconds(21)).place.longitude, 1);
  EXPECT_EQ(motionAt(state, seconds(21)).velocity.east, 0);
}

TEST(Antenna, MovesAsFastAsItsPlaceChanges) {
  const sim::State state =
      moving({at(seconds(0), 48, 11, 500), at(seconds(100), 48.02, 10.97, 530)});
  for (const milliseconds time : {seconds(1), seconds(50), seconds(98)}) {
    const sim::Motion now = motionAt(state, time);
    const sim::EarthFixed here = sim::earthFixed(now.place);
    const sim::EarthFixed soon = sim::earthFixed(motionAt(state, time + milliseconds(100)).place);
    expectNear(sim::earthFixed(now.place, now.velocity),
               {(soon[0] - here[0]) * 10, (soon[1] - here[1]) * 10, (soon[2] - here[2]) * 10},
               kMillimetre);
  }
}

TEST(Antenna, CrossesTheDateLineTheShortWay) {
  const sim::State state = moving({at(seconds(0), 0, 179), at(seconds(4), 0, -179)});
  EXPECT_DOUBLE_EQ(motionAt(state, seconds(1)).place.longitude, 179.5);
  EXPECT_DOUBLE_EQ(motionAt(state, seconds(3)).place.longitude, -179.5);
  EXPECT_GT(motionAt(state, seconds(3)).velocity.east, 0);
}

TEST(Antenna, BeginsARepeatedTrackAnew) {
  const sim::State state =
      moving({at(seconds(0), 0, 0), at(seconds(10), 10, 0), at(seconds(20), 0, 0)}, true);
  for (const seconds round : {seconds(0), seconds(20), seconds(2000)}) {
    EXPECT_DOUBLE_EQ(motionAt(state, round + seconds(5)).place.latitude, 5);
    EXPECT_DOUBLE_EQ(motionAt(state, round + seconds(14)).place.latitude, 6);
  }
}

TEST(Antenna, StandsAtAWaypointThatIsAlone) {
  for (const bool repeats : {false, true}) {
    const sim::State state = moving({at(seconds(0), 12, 34, 56)}, repeats);
    EXPECT_EQ(motionAt(state, seconds(77)).place.latitude, 12);
    EXPECT_EQ(motionAt(state, seconds(77)).velocity.north, 0);
  }
}

TEST(Receiver, TravelsByItsOwnClock) {
  sim::State state = moving({at(seconds(0), 0, 0), at(seconds(100), 0, 1)});
  state.clockRate = 5;
  sim::Receiver receiver(state);
  receiver.tick(seconds(10));
  EXPECT_EQ(receiver.state().solution().longitude, 5000000);
  receiver.change([](sim::State& now) { now.clockRate = 0; });
  receiver.tick(seconds(10));
  EXPECT_EQ(receiver.state().solution().longitude, 5000000);
}

TEST(Receiver, LetsItsClockRunAtItsOwnRate) {
  const auto passed = [](double rate, milliseconds tick, int ticks) {
    sim::Receiver receiver;
    receiver.change([&](sim::State& state) { state.clockRate = rate; });
    const milliseconds before = receiver.state().time.timeOfWeek;
    for (; ticks > 0; --ticks) {
      receiver.tick(tick);
    }
    return receiver.state().time.timeOfWeek - before;
  };
  EXPECT_EQ(passed(1, seconds(10), 1), seconds(10));
  EXPECT_EQ(passed(60, seconds(10), 1), seconds(600));
  EXPECT_EQ(passed(0.25, milliseconds(1), 10000), milliseconds(2500));
  EXPECT_EQ(passed(0, seconds(10), 3), seconds(0));
  EXPECT_EQ(passed(-1, seconds(10), 3), seconds(0));
  EXPECT_EQ(passed(std::nan(""), seconds(10), 3), seconds(0));
}

}  // namespace
}  // namespace orb::test
