#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <thread>

#include "orb-gnss/controller.h"
#include "orb-sim/scenario.h"
#include "support/receiver_fixture.h"

// What a client of the library sees of a survey.

namespace orb::test {
namespace {

using namespace std::chrono_literals;

struct Progress {
  unsigned int mode = 0;
  unsigned int length = 0;
  unsigned int deviation = 0;  ///< centimetres
  double latitude = 0;         ///< degrees
  double longitude = 0;        ///< degrees
  float altitude = 0;          ///< metres
};

Progress progressOf(orbController_QN4470T01& driver) {
  Progress now;
  EXPECT_EQ(driver.gpsObtGetTimeMode(now.mode, now.length, now.deviation, now.latitude,
                                     now.longitude, now.altitude),
            0U);
  return now;
}

TEST(SurveyOfTheDriver, ConvergesBeforeItsEyes) {
  constexpr double kLatitude = 48.3712345;  // the antenna's
  constexpr double kMetresPerDegree = 111'200;
  const DeviceFiles files;
  const WallClock clock;
  sim::Scenario scenario;
  scenario.state.clockRate = 100;
  sim::ScenarioDevice device(scenario);
  const sim::PtyLine line(device, files.tty);
  StampedDriver driver;
  ASSERT_EQ(driver.setSurveyAuto(1'000'000, 1), 0U);

  Progress last = progressOf(driver);
  double lastError = 1e9;  // metres
  for (int look = 0; look < 4; ++look) {
    std::this_thread::sleep_for(200ms);  // 20 s of the receiver's clock
    const Progress now = progressOf(driver);
    EXPECT_EQ(now.mode, 1U);
    EXPECT_LT(now.deviation, last.deviation);
    const double error = std::abs(now.latitude - kLatitude) * kMetresPerDegree;
    EXPECT_LT(error, lastError);
    EXPECT_GT(error, 0);
    EXPECT_LT(error * 100, now.deviation);
    EXPECT_NEAR(now.longitude, 11.5678901, 1e-7);
    EXPECT_NEAR(now.altitude, 520.12, now.deviation / 100.0);
    last = now;
    lastError = error;
  }

  unsigned char mode = 0;
  double latitude = 0;
  double longitude = 0;
  double altitude = 0;
  double reserved = 0;
  unsigned int length = 0;
  float deviation = 0;
  ASSERT_EQ(driver.getSurveyInfo(mode, latitude, longitude, altitude, reserved, length, deviation),
            0U);
  EXPECT_LE(std::abs(latitude - kLatitude) * kMetresPerDegree, lastError);
  EXPECT_EQ(length, 1'000'000U);
}

}  // namespace
}  // namespace orb::test
