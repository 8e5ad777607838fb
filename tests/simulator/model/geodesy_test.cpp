#include "model/geodesy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orb::test {
namespace {

using sim::earthFixed;
using testing::DoubleNear;
using testing::ElementsAre;

constexpr double kEquatorialRadius = 6378137;
constexpr double kPolarRadius = 6356752.3142;

auto near(double x, double y, double z) {
  constexpr double kMillimetre = 0.001;
  return ElementsAre(DoubleNear(x, kMillimetre), DoubleNear(y, kMillimetre),
                     DoubleNear(z, kMillimetre));
}

TEST(Geodesy, KnowsTheEndsOfTheAxes) {
  EXPECT_THAT(earthFixed({0, 0, 0}), near(kEquatorialRadius, 0, 0));
  EXPECT_THAT(earthFixed({0, 90, 10}), near(0, kEquatorialRadius + 10, 0));
  EXPECT_THAT(earthFixed({90, 0, 0}), near(0, 0, kPolarRadius));
  EXPECT_THAT(earthFixed({-90, 0, 5}), near(0, 0, -kPolarRadius - 5));
}

TEST(Geodesy, TurnsVectorsToTheAxes) {
  EXPECT_THAT(earthFixed({0, 0, 0}, {1, 2, 3}), near(3, 1, 2));
  EXPECT_THAT(earthFixed({0, 90, 0}, {1, 2, 3}), near(-1, 3, 2));
  EXPECT_THAT(earthFixed({90, 0, 0}, {1, 2, 3}), near(-2, 1, 3));
}

// The lengths of a degree that tables of the WGS 84 ellipsoid have.
TEST(Geodesy, KnowsHowLongADegreeIs) {
  constexpr double kMetre = 1;
  const sim::EastNorthUp atEquator = sim::metresPerDegree({0, 0, 0});
  EXPECT_NEAR(atEquator.east, 111'320, kMetre);
  EXPECT_NEAR(atEquator.north, 110'574, kMetre);
  const sim::EastNorthUp at60 = sim::metresPerDegree({60, 0, 0});
  EXPECT_NEAR(at60.east, 55'800, kMetre);
  EXPECT_NEAR(at60.north, 111'412, kMetre);
}

}  // namespace
}  // namespace orb::test
