#include "model/dilution.h"

#include <gtest/gtest.h>

#include <cmath>

namespace orb::test {
namespace {

constexpr double kTolerance = 1e-9;

sim::Satellite at(double elevation, double azimuth) {
  return {sim::Constellation::Gps, 1, elevation, azimuth, 40};
}

const std::vector<sim::Satellite> kThreeOnTheHorizon{at(0, 0), at(0, 120), at(0, 240)};

TEST(Dilution, IsThatOfTheTextbookForOneAtTheZenithAndThreeOnTheHorizon) {
  std::vector<sim::Satellite> satellites = kThreeOnTheHorizon;
  satellites.push_back(at(90, 0));
  const auto dilution = sim::dilutionIn3d(satellites);
  ASSERT_TRUE(dilution);
  EXPECT_NEAR(dilution->geometric, std::sqrt(3.0), kTolerance);
  EXPECT_NEAR(dilution->position, std::sqrt(8.0 / 3), kTolerance);
  EXPECT_NEAR(dilution->horizontal, std::sqrt(4.0 / 3), kTolerance);
  EXPECT_NEAR(dilution->vertical, std::sqrt(4.0 / 3), kTolerance);
  EXPECT_NEAR(dilution->time, std::sqrt(1.0 / 3), kTolerance);
}

TEST(Dilution, DoesNotDependOnWhereNorthIs) {
  std::vector<sim::Satellite> satellites{at(10, 15), at(40, 100), at(70, 200), at(25, 290),
                                         at(5, 330)};
  const auto before = sim::dilutionIn3d(satellites);
  for (sim::Satellite& satellite : satellites) {
    satellite.azimuth += 77;
  }
  const auto after = sim::dilutionIn3d(satellites);
  ASSERT_TRUE(before && after);
  EXPECT_NEAR(before->geometric, after->geometric, kTolerance);
  EXPECT_NEAR(before->horizontal, after->horizontal, kTolerance);
}

TEST(Dilution, OfTheTimeAloneIsThatOfAMean) {
  EXPECT_DOUBLE_EQ(sim::dilutionOfTime({at(5, 10)}).time, 1);
  EXPECT_DOUBLE_EQ(sim::dilutionOfTime({at(5, 10), at(9, 9), at(3, 3), at(1, 1)}).time, 0.5);
  EXPECT_DOUBLE_EQ(sim::dilutionOfTime({at(5, 10)}).geometric, 1);
  EXPECT_EQ(sim::dilutionOfTime({at(5, 10)}).position, 0);
}

TEST(Dilution, IsNoneWhereTheSatellitesDetermineNothing) {
  EXPECT_FALSE(sim::dilutionIn3d({}));
  EXPECT_FALSE(sim::dilutionIn3d(kThreeOnTheHorizon));
  EXPECT_FALSE(sim::dilutionIn2d({at(10, 20), at(30, 40)}));
  // Five at one elevation do not tell height from time; four in one place tell nothing.
  EXPECT_FALSE(sim::dilutionIn3d({at(30, 0), at(30, 70), at(30, 140), at(30, 210), at(30, 280)}));
  EXPECT_FALSE(sim::dilutionIn3d({at(45, 45), at(45, 45), at(45, 45), at(45, 45)}));
}

}  // namespace
}  // namespace orb::test
