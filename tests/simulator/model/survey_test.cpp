#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "model/body.h"
#include "receivers.h"

namespace orb::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::int32_t kLatitude = 483712345;
constexpr std::int32_t kAltitude = 52012;

/// A receiver under an ordinary sky that has begun to survey for so many seconds.
struct SurveyingReceiver : sim::Receiver {
  explicit SurveyingReceiver(std::uint32_t length) : sim::Receiver(underOrdinarySky()) {
    constexpr std::uint8_t kNotToBeKept = 0;
    sim::BodyWriter body;
    body.write(sim::Timing{sim::TimingMode::AutoSurvey, length}, kNotToBeKept);
    receive(sim::frame(0x5400, body.body()));
  }

  /// Distance of the reported latitude from the antenna's, in units of 1e-7 degree.
  int latitudeError() const { return std::abs(state().solution().latitude - kLatitude); }
};

TEST(Survey, IsOffByTwoMetresForEachUnitOfDilutionDividedByTheRootOfItsTime) {
  SurveyingReceiver receiver(1000);
  constexpr double kMetresPerUnitOfLatitude = 111200e-7;
  const auto expectErrors = [&](double horizontal, double vertical) {
    EXPECT_NEAR(receiver.latitudeError() * kMetresPerUnitOfLatitude, horizontal, 0.012);
    EXPECT_NEAR((receiver.state().solution().ellipsoidAltitude - kAltitude) / 100.0, vertical,
                0.006);
  };
  const auto dops = receiver.state().solution().dops;
  const double horizontal = 2 * dops[2] / 100.0;
  const double vertical = 2 * dops[3] / 100.0;
  expectErrors(horizontal, vertical);
  receiver.tick(seconds(8));
  expectErrors(horizontal / 3, vertical / 3);
  receiver.tick(seconds(91));
  expectErrors(horizontal / 10, vertical / 10);
}

TEST(Survey, EndsInAStaticReceiverAtTheSurveyedPlace) {
  SurveyingReceiver receiver(1000);
  receiver.tick(milliseconds(999999));
  EXPECT_EQ(receiver.state().runningTimingMode(), sim::TimingMode::AutoSurvey);
  receiver.tick(milliseconds(1));
  const sim::State state = receiver.state();
  EXPECT_EQ(state.runningTimingMode(), sim::TimingMode::Static);
  EXPECT_NEAR(state.timing.latitude, kLatitude / 1e7, 1e-6);
  EXPECT_NEAR(state.timing.longitude, 11.5678901, 1e-6);
  EXPECT_NEAR(state.timing.altitude, kAltitude / 100.0, 0.2);
  EXPECT_EQ(state.solution().latitude, std::lround(state.timing.latitude * 1e7));
}

TEST(Survey, TellsWhereItStandsInTheTimingReply) {
  SurveyingReceiver receiver(60);
  receiver.tick(milliseconds(20999));
  Bytes reply = replyTo(0x4400, receiver);
  EXPECT_EQ(reply[0], 1);
  EXPECT_EQ(Bytes(reply.end() - 5, reply.end()), hex("01 00 00 00 14"));
  receiver.tick(seconds(100));
  reply = replyTo(0x4400, receiver);
  EXPECT_EQ(reply[0], 1);
  EXPECT_EQ(Bytes(reply.end() - 5, reply.end()), hex("02 00 00 00 3C"));
  const Bytes place(reply.begin() + 9, reply.end());
  sim::BodyReader reader(place);
  std::array<double, 2> degrees{};
  float altitude = 0;
  reader.read(degrees);
  reader.read(altitude);
  EXPECT_NEAR(degrees[0], 48.3712345, 1e-5);
  EXPECT_NEAR(degrees[1], 11.5678901, 1e-5);
  EXPECT_NEAR(altitude, 520.12, 1);
}

/// What the reply to the timing query tells.
sim::Timing reportedBy(sim::Receiver& receiver) {
  const Bytes reply = replyTo(0x4400, receiver);
  sim::Timing timing;
  sim::BodyReader(reply).read(timing);
  return timing;
}

TEST(Survey, ReportsTheMeanSoFarAndItsDeviationWhileItRuns) {
  SurveyingReceiver receiver(1000);
  EXPECT_EQ(reportedBy(receiver).standardDeviation, 30U) << "nothing has been measured";
  EXPECT_EQ(reportedBy(receiver).latitude, 0);

  const double dop = receiver.state().solution().dops[1] / 100.0;
  const auto expectProgress = [&](double root) {
    const sim::Timing timing = reportedBy(receiver);
    const auto deviation = static_cast<std::uint32_t>(std::lround(200 * dop / root));
    EXPECT_EQ(timing.standardDeviation, deviation);
    const sim::Navigation solution = receiver.state().solution();
    EXPECT_EQ(std::lround(timing.latitude * 1e7), solution.latitude);
    EXPECT_EQ(std::lround(timing.longitude * 1e7), solution.longitude);
    EXPECT_NEAR(timing.altitude, solution.ellipsoidAltitude / 100.0, 0.006);
  };
  receiver.tick(seconds(8));
  expectProgress(3);
  receiver.tick(seconds(91));
  expectProgress(10);
  receiver.tick(seconds(901));
  EXPECT_EQ(receiver.state().runningTimingMode(), sim::TimingMode::Static);
  expectProgress(std::sqrt(1001));
}

TEST(Survey, KeepsWhatWasSetWhereThereIsNoSky) {
  sim::State state;
  ASSERT_TRUE(state.sky.empty());
  state.timing = {sim::TimingMode::AutoSurvey, 100, 30, 1, 2, 3};
  sim::Receiver receiver(state);
  receiver.tick(seconds(99));
  EXPECT_EQ(reportedBy(receiver).standardDeviation, 30U);
  EXPECT_EQ(reportedBy(receiver).latitude, 1);
  receiver.tick(seconds(1));
  EXPECT_NE(reportedBy(receiver).latitude, 1);
}

TEST(Survey, KeepsWhatItHasFoundWhileThereIsNoFix) {
  SurveyingReceiver receiver(1000);
  receiver.tick(seconds(20));
  const Bytes before = replyTo(0x4400, receiver);
  receiver.change([](sim::State& state) { state.constellations = 0; });
  receiver.tick(seconds(20));
  EXPECT_EQ(replyTo(0x4400, receiver), before);
}

TEST(Survey, HoldsThePlaceWhenTheAntennaMovesAway) {
  SurveyingReceiver receiver(60);
  receiver.tick(seconds(60));
  const std::int32_t surveyed = receiver.state().solution().latitude;
  receiver.change([](sim::State& state) { state.navigation.latitude += 1000000; });
  EXPECT_EQ(receiver.state().solution().latitude, surveyed);
}

TEST(Survey, WaitsWhileThereIsNoFix) {
  SurveyingReceiver receiver(60);
  receiver.tick(seconds(20));
  receiver.change([](sim::State& state) { state.constellations = 0; });
  receiver.tick(seconds(500));
  EXPECT_EQ(receiver.state().surveyed, seconds(20));
  EXPECT_EQ(receiver.latitudeError(), 0) << "nothing is measured";
  receiver.change([](sim::State& state) { state.constellations = 3; });
  receiver.tick(seconds(40));
  EXPECT_EQ(receiver.state().runningTimingMode(), sim::TimingMode::Static);
}

TEST(Survey, PassesByTheReceiversClock) {
  SurveyingReceiver receiver(600);
  receiver.change([](sim::State& state) { state.clockRate = 60; });
  receiver.tick(seconds(9));
  EXPECT_EQ(receiver.state().surveyed, seconds(540));
  receiver.tick(seconds(1));
  EXPECT_EQ(receiver.state().runningTimingMode(), sim::TimingMode::Static);
}

TEST(Survey, BeginsAnewWhenItIsAskedForAgain) {
  SurveyingReceiver receiver(60);
  receiver.tick(seconds(60));
  EXPECT_LT(receiver.latitudeError(), 30);
  receiver.receive(sim::frame(0x5400, Bytes{1, 0, 0, 0, 60} + Bytes(25)));
  EXPECT_EQ(receiver.state().runningTimingMode(), sim::TimingMode::AutoSurvey);
  EXPECT_GT(receiver.latitudeError(), 50);
}

}  // namespace
}  // namespace orb::test
