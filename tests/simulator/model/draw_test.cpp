#include "model/draw.h"

#include <gtest/gtest.h>

namespace orb::test {
namespace {

// Worked out by another implementation of splitmix64.
TEST(Draw, IsTheSameOnEveryMachine) {
  sim::Draw draw(1, 2, 3);
  EXPECT_EQ(draw.next(), 0x6FF419CB83DFE1E6U);
  EXPECT_DOUBLE_EQ(draw.fraction(), 0.9549255112847241);
  EXPECT_EQ(sim::Draw(1, 2, 3).below(10), 2U);
}

TEST(Draw, DependsOnSeedStreamAndCount) {
  const auto first = sim::Draw(1, 2, 3).next();
  EXPECT_NE(sim::Draw(0, 2, 3).next(), first);
  EXPECT_NE(sim::Draw(1, 0, 3).next(), first);
  EXPECT_NE(sim::Draw(1, 2, 0).next(), first);
}

}  // namespace
}  // namespace orb::test
