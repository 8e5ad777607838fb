#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "receivers.h"

namespace orb::test {
namespace {

constexpr std::uint16_t kGpsOnly = 0x01;
constexpr std::array<std::uint16_t, 5> kNoDops{9990, 9990, 9990, 9990, 9990};

/// Four GPS satellites: one at the zenith and three on the horizon.
sim::State underFourSatellites() {
  sim::State state;
  state.elevationCnrMask = {0, 0, 0};
  for (std::uint8_t number = 1; number <= 3; ++number) {
    state.sky.push_back({sim::Constellation::Gps, number, 0, 120.0 * number, 40});
  }
  state.sky.push_back({sim::Constellation::Gps, 4, 90, 0, 40});
  return state;
}

std::size_t used(const sim::State& state, sim::Constellation constellation) {
  const std::vector<sim::Satellite> satellites = state.satellitesUsed();
  return static_cast<std::size_t>(std::count_if(
      satellites.begin(), satellites.end(),
      [&](const sim::Satellite& satellite) { return satellite.constellation == constellation; }));
}

TEST(OrdinarySky, HasEveryConstellationAndSatellitesThatAreLowOrWeak) {
  const std::vector<sim::Satellite> sky = sim::ordinarySky();
  std::set<sim::Constellation> constellations;
  std::set<std::pair<sim::Constellation, int>> names;
  for (const sim::Satellite& satellite : sky) {
    constellations.insert(satellite.constellation);
    names.insert({satellite.constellation, satellite.number});
  }
  EXPECT_EQ(constellations.size(), 6U);
  EXPECT_EQ(names.size(), sky.size());
  EXPECT_GE(sky.size(), 20U);
  const auto low = [](const sim::Satellite& satellite) { return satellite.elevation < 10; };
  const auto weak = [](const sim::Satellite& satellite) { return satellite.cnr < 30; };
  EXPECT_GE(std::count_if(sky.begin(), sky.end(), low), 4);
  EXPECT_GE(std::count_if(sky.begin(), sky.end(), weak), 4);
}

TEST(Solution, IsNavigationAsItStandsWithoutASky) {
  sim::State state;
  state.navigation = {1, 200, -5, 7, 11, -13, {1, 2, 3, 4, 5}};
  EXPECT_EQ(valuesOf(state.solution()), valuesOf({1, 200, -5, 7, 11, -13, {1, 2, 3, 4, 5}}));
  EXPECT_TRUE(state.satellitesUsed().empty());
}

TEST(Solution, TellsTheAntennasPlaceAndTheDilutionOfItsSky) {
  const sim::State state = underFourSatellites();
  EXPECT_EQ(valuesOf(state.solution()),
            valuesOf({2, 4, 483712345, 115678901, 52012, 47590, {173, 163, 115, 115, 58}}));
}

TEST(Solution, UsesTheEnabledConstellationsOnly) {
  sim::State state = underOrdinarySky();
  state.elevationCnrMask.mode = 0;
  state.qzss[0] = 0;
  state.constellations = 0;
  EXPECT_EQ(state.solution().fixMode, 0);
  using C = sim::Constellation;
  for (const C constellation : {C::Gps, C::Glonass, C::Galileo, C::Beidou}) {
    state.constellations = static_cast<std::uint16_t>(1 << static_cast<int>(constellation));
    EXPECT_GE(used(state, constellation), 4U);
    EXPECT_EQ(state.solution().satellites, used(state, constellation));
  }
  state.constellations = 0x0F;
  EXPECT_EQ(state.solution().satellites, 20);
  state.qzss[0] = 1;
  EXPECT_EQ(state.solution().satellites, 21);
  EXPECT_EQ(used(state, sim::Constellation::Qzss), 1U);
}

TEST(Solution, IsDifferentialWhileAnSbasSatelliteIsHeard) {
  sim::State state = underFourSatellites();
  state.sky.push_back({sim::Constellation::Sbas, 3, 30, 160, 35});
  EXPECT_EQ(state.solution().fixMode, 3);
  EXPECT_EQ(state.solution().satellites, 4);
  state.elevationCnrMask = {1, 0, 36};
  EXPECT_EQ(state.solution().fixMode, 2);
  state.elevationCnrMask = {1, 0, 35};
  EXPECT_EQ(state.solution().fixMode, 3);
  state.sbas[0] = 0;
  EXPECT_EQ(state.solution().fixMode, 2);
}

TEST(Solution, LeavesSatellitesBelowTheMaskOut) {
  sim::State state = underOrdinarySky();
  state.constellations = kGpsOnly;
  state.qzss[0] = 0;
  const auto satellitesAbove = [&](std::uint8_t elevation, std::uint8_t cnr) {
    state.elevationCnrMask = {1, elevation, cnr};
    return int{state.solution().satellites};
  };
  EXPECT_EQ(satellitesAbove(0, 0), 8);
  EXPECT_EQ(satellitesAbove(5, 0), 7);
  EXPECT_EQ(satellitesAbove(7, 0), 7);
  EXPECT_EQ(satellitesAbove(8, 0), 6);
  EXPECT_EQ(satellitesAbove(30, 0), 4);
  EXPECT_EQ(satellitesAbove(34, 0), 0);  // three are left, too few for a 3D fix
  EXPECT_EQ(satellitesAbove(0, 22), 8);
  EXPECT_EQ(satellitesAbove(0, 23), 7);
  EXPECT_EQ(satellitesAbove(0, 40), 4);
  EXPECT_EQ(satellitesAbove(0, 99), 0);
  state.elevationCnrMask.mode = 0;
  EXPECT_EQ(state.solution().satellites, 8);
}

TEST(Solution, DoesNotHearWhatIsWeakOrLowOrDrownedByInterference) {
  sim::State state = underFourSatellites();
  for (sim::Satellite& satellite : state.sky) {
    satellite.cnr = 20;
  }
  state.sky.push_back({sim::Constellation::Gps, 5, 45, 45, 21});
  state.sky.push_back({sim::Constellation::Gps, 7, -1, 0, 40});  // below the horizon
  state.sky.push_back({sim::Constellation::Gps, 8, 45, 0, 0});   // too weak to be heard
  state.sky.push_back({sim::Constellation::Gps, 6, 45, 90, 5});
  EXPECT_EQ(state.solution().satellites, 6);
  state.interferenceStatus = 2;
  EXPECT_EQ(state.solution().satellites, 5);
  state.interferenceStatus = 3;
  state.timing.mode = sim::TimingMode::Static;
  EXPECT_EQ(state.solution().satellites, 1);
}

TEST(Solution, NeedsFourSatellitesUnlessTheMaskLetsA2dFixPass) {
  sim::State state = underFourSatellites();
  state.sky.pop_back();
  EXPECT_EQ(state.solution().fixMode, 0);
  EXPECT_EQ(state.solution().satellites, 0);
  EXPECT_EQ(state.solution().dops, kNoDops);
  EXPECT_TRUE(state.satellitesUsed().empty());

  state.fixNavMask = {0, 1};
  EXPECT_EQ(state.solution().fixMode, 1);
  EXPECT_EQ(state.solution().satellites, 3);
  EXPECT_EQ(state.solution().dops, (std::array<std::uint16_t, 5>{129, 115, 115, 0, 58}));

  state.sky.push_back({sim::Constellation::Sbas, 3, 30, 160, 35});
  EXPECT_EQ(state.solution().fixMode, 1) << "corrections do not make it a 3D fix";

  state.startup.hasHadFix = false;
  EXPECT_EQ(state.solution().fixMode, 0);
  state.fixNavMask = {1, 0};
  EXPECT_EQ(state.solution().fixMode, 1);
}

TEST(Receiver, HoldsToTheSecondFixMaskOnceItHasHadAFix) {
  sim::State state = underFourSatellites();
  state.sky.pop_back();
  state.fixNavMask = {1, 0};
  state.startup.hasHadFix = false;
  sim::Receiver receiver(state);
  EXPECT_EQ(receiver.state().solution().fixMode, 1);
  receiver.tick(std::chrono::seconds(1));
  EXPECT_EQ(receiver.state().solution().fixMode, 0);
}

TEST(Solution, IsNoneAboveADopLimit) {
  sim::State state = underFourSatellites();  // 1.63 of position, 1.15 horizontal, 1.73 geometric
  const auto fixWithin = [&](std::uint16_t position, std::uint16_t horizontal,
                             std::uint16_t geometric) {
    state.dopMask = {1, {position, horizontal, geometric}};
    return state.solution().fixMode != 0;
  };
  EXPECT_TRUE(fixWithin(17, 12, 18));
  EXPECT_FALSE(fixWithin(16, 12, 18));
  EXPECT_FALSE(fixWithin(17, 11, 18));
  EXPECT_FALSE(fixWithin(17, 12, 17));
  state.dopMask.mode = 0;
  EXPECT_EQ(state.solution().fixMode, 2);
}

TEST(Solution, OfAStaticReceiverIsThePlaceThatItWasGiven) {
  sim::State state = underFourSatellites();
  state.timing = {sim::TimingMode::Static, 2000, 30, -12.5, 170.25, 1000.5F};
  const sim::Navigation solution = state.solution();
  EXPECT_EQ(solution.fixMode, 2);
  EXPECT_EQ(solution.latitude, -125000000);
  EXPECT_EQ(solution.longitude, 1702500000);
  EXPECT_EQ(solution.ellipsoidAltitude, 100050);
  EXPECT_EQ(solution.meanSeaLevelAltitude, 100050 - (52012 - 47590));
}

TEST(Solution, OfAStaticReceiverTakesOneSatellite) {
  sim::State state = underFourSatellites();
  state.timing.mode = sim::TimingMode::Static;
  state.sky.resize(1);
  EXPECT_EQ(state.solution().fixMode, 2);
  EXPECT_EQ(state.solution().satellites, 1);
  EXPECT_EQ(state.solution().dops, (std::array<std::uint16_t, 5>{100, 0, 0, 0, 100}));
  state.sky[0].cnr = 0;
  EXPECT_EQ(state.solution().fixMode, 0);
}

TEST(Solution, OfAStaticReceiverIgnoresAPlaceThatIsNoneOnEarth) {
  sim::State state = underFourSatellites();
  for (const double latitude : {90.5, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
    state.timing = {sim::TimingMode::Static, 2000, 30, latitude, 0, 0};
    EXPECT_EQ(state.solution().latitude, 483712345);
  }
}

}  // namespace
}  // namespace orb::test
