#include "device/shared_device.h"

#include <gtest/gtest.h>

#include "device/echo_device.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

/// Says how much time has passed.
class Stopwatch : public EchoDevice {
 public:
  sim::Bytes tick(std::chrono::milliseconds elapsed) override {
    return {static_cast<std::uint8_t>(elapsed.count())};
  }
};

TEST(SharedDevice, SaysToBothLinesWhatItAnswersToEither) {
  EchoDevice echo;
  sim::SharedDevice shared(echo);
  EXPECT_EQ(shared.first().receive({1}), sim::Bytes{1});
  EXPECT_EQ(shared.second().receive({2}), (sim::Bytes{1, 2}));
  EXPECT_EQ(shared.first().tick(0ms), sim::Bytes{2});
  EXPECT_EQ(shared.second().tick(0ms), sim::Bytes{});
}

TEST(SharedDevice, LetsItsTimePassOnTheFirstLine) {
  Stopwatch stopwatch;
  sim::SharedDevice shared(stopwatch);
  EXPECT_EQ(shared.second().tick(3ms), sim::Bytes{});
  EXPECT_EQ(shared.first().tick(5ms), sim::Bytes{5});
  EXPECT_EQ(shared.second().tick(7ms), sim::Bytes{5});
}

TEST(SharedDevice, DropsBothLinesOnce) {
  EchoDevice echo;
  sim::SharedDevice shared(echo);
  EXPECT_FALSE(shared.first().takeHangUp());
  echo.drop();
  EXPECT_TRUE(shared.second().takeHangUp());
  EXPECT_TRUE(shared.first().takeHangUp());
  EXPECT_FALSE(shared.first().takeHangUp());
  EXPECT_FALSE(shared.second().takeHangUp());
}

TEST(SharedDevice, TakesNoMoreOnEitherLineWhereTheDeviceDoesNot) {
  struct Full : EchoDevice {
    bool takesMore() const override { return false; }
  } full;
  sim::SharedDevice shared(full);
  EXPECT_FALSE(shared.first().takesMore());
  EXPECT_FALSE(shared.second().takesMore());
}

TEST(SharedDevice, LooksOftenForWhatTheOtherLineHasLeft) {
  EchoDevice echo;
  sim::SharedDevice shared(echo);
  EXPECT_LE(shared.first().untilNextOutput(), 20ms);
  EXPECT_LE(shared.second().untilNextOutput(), 20ms);
}

}  // namespace
}  // namespace orb::test
