#include <gtest/gtest.h>

#include "receivers.h"

namespace orb::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const Bytes kRateQuery = sim::frame(0x1000);

Bytes softReset(std::uint8_t kind) { return sim::frame(0x0100, Bytes{kind} + Bytes(13)); }
Bytes restart(std::uint8_t flag) { return sim::frame(0x643F, {flag}); }
Bytes setUpdateRate(std::uint8_t rate, std::uint8_t attribute) {
  return sim::frame(0x0E00, {rate, attribute});
}

/// Seconds until there is a fix, when a second passes at a time.
int secondsToFix(sim::Receiver& receiver) {
  int passed = 0;
  while (receiver.state().solution().fixMode == 0 && passed < 1000) {
    receiver.tick(seconds(1));
    ++passed;
  }
  return passed;
}

TEST(Start, TakesLongerTheLessTheReceiverKnows) {
  const struct {
    Bytes command;
    int time;       // until there is a fix, in seconds
    int timeGiven;  // the same where the scenario has its own times
  } kStarts[] = {
      {softReset(1), 1, 3}, {softReset(2), 28, 6}, {softReset(3), 35, 9},
      {restart(0), 1, 3},   {restart(1), 35, 9},
  };
  for (const bool withSky : {false, true}) {
    sim::State state = withSky ? underOrdinarySky() : sim::State{};
    sim::Receiver receiver(state);
    state.startTimes = {seconds(2), seconds(9), seconds(6), seconds(3)};
    sim::Receiver receiverGivenTimes(state);
    EXPECT_EQ(secondsToFix(receiver), 0);
    for (const auto& [command, time, timeGiven] : kStarts) {
      receiver.receive(command);
      EXPECT_EQ(secondsToFix(receiver), time);
      receiverGivenTimes.receive(command);
      EXPECT_EQ(secondsToFix(receiverGivenTimes), timeGiven);
    }
  }
}

TEST(Start, DoesNotHappenForASoftResetOfAnotherKind) {
  sim::Receiver receiver(underOrdinarySky());
  receiver.receive(setUpdateRate(5, 0));
  for (const std::uint8_t kind : Bytes{0, 4, 255}) {
    EXPECT_EQ(receiver.receive(softReset(kind)), sim::acknowledge(0x0100));
    EXPECT_EQ(secondsToFix(receiver), 0);
  }
  EXPECT_EQ(receiver.state().softResets, 3U);
  EXPECT_EQ(receiver.state().updateRate, 5);
}

TEST(Start, KnowsNeitherTimeNorPlaceWhenCold) {
  sim::Receiver receiver(underOrdinarySky());
  receiver.receive(sim::frame(0x0900, {2, 1}));
  receiver.receive(softReset(3));
  EXPECT_EQ(replyTo(0x6420, receiver), hex("00 00 00 00 00 00 00 00 00 00 12 12 00"));
  const Bytes body = sim::FrameReader().push(receiver.tick(seconds(1))).at(0).body();
  EXPECT_EQ(Bytes(body.begin(), body.begin() + 24), Bytes(24));
  receiver.tick(seconds(34));
  EXPECT_EQ(receiver.state().solution().latitude, 483712345);
  // 35 seconds later than at the beginning.
  EXPECT_EQ(replyTo(0x6420, receiver), hex("14 9B 29 68 00 00 00 00 08 FC 12 12 07"));
}

TEST(Start, KeepsTimeAndPlaceWhenWarmOrHot) {
  for (const std::uint8_t kind : Bytes{1, 2}) {
    sim::Receiver receiver(underOrdinarySky());
    receiver.receive(softReset(kind));
    EXPECT_EQ(receiver.state().solution().latitude, 483712345);
    EXPECT_EQ(replyTo(0x6420, receiver), hex("14 9A A0 B0 00 00 00 00 08 FC 12 12 07"));
  }
}

TEST(Start, StaysColdWhenItIsInterruptedByAHotOne) {
  sim::Receiver receiver(underOrdinarySky());
  receiver.receive(softReset(3));
  receiver.tick(seconds(10));
  receiver.receive(softReset(1));
  EXPECT_EQ(secondsToFix(receiver), 35);
}

TEST(Start, IsDeafAndDumbForItsSilence) {
  sim::State state;
  state.startTimes.silence = seconds(5);
  sim::Receiver receiver(state);
  const Bytes answer = receiver.receive(kRateQuery);
  EXPECT_EQ(receiver.receive(restart(0) + kRateQuery), sim::acknowledge(0x643F));
  EXPECT_EQ(receiver.receive(kRateQuery), Bytes{});
  EXPECT_EQ(receiver.untilNextOutput(), seconds(5));
  EXPECT_EQ(receiver.tick(milliseconds(4999)), Bytes{});
  EXPECT_EQ(receiver.receive(kRateQuery), Bytes{});
  EXPECT_EQ(receiver.untilNextOutput(), milliseconds(1));
  EXPECT_EQ(receiver.tick(milliseconds(1)), Bytes{});
  EXPECT_EQ(receiver.receive(kRateQuery), answer);
  EXPECT_EQ(receiver.untilNextOutput(), seconds(1));
}

TEST(Start, SendsAgainAtTheSecondAfterItsSilenceAndForgetsAFrameThatHadBegun) {
  sim::State state;
  state.startTimes.silence = seconds(5);
  sim::Receiver receiver(state);
  receiver.receive(kRateQuery);
  receiver.tick(milliseconds(700));
  receiver.receive(restart(0) + Bytes(kRateQuery.begin(), kRateQuery.begin() + 4));
  EXPECT_EQ(receiver.tick(milliseconds(5000)), Bytes{});
  EXPECT_EQ(receiver.receive(Bytes(kRateQuery.begin() + 4, kRateQuery.end())), Bytes{});
  EXPECT_EQ(receiver.tick(milliseconds(299)), Bytes{});
  EXPECT_NE(receiver.tick(milliseconds(1)), Bytes{});
}

TEST(Start, LosesSettingsThatWereNotToBeKept) {
  for (const Bytes& command : {softReset(1), softReset(2), softReset(3), restart(0), restart(1)}) {
    for (const std::uint8_t attribute : Bytes{0, 2, 255}) {
      sim::Receiver receiver;
      receiver.receive(setUpdateRate(20, attribute));
      receiver.receive(command);
      EXPECT_EQ(receiver.state().updateRate, 1);
      EXPECT_TRUE(receiver.state().attributes.empty());
    }
  }
}

TEST(Start, FindsSettingsThatWereToBeKept) {
  sim::Receiver receiver;
  receiver.receive(setUpdateRate(20, 1));
  receiver.receive(setUpdateRate(10, 0));
  receiver.receive(sim::frame(0x0C00, {1, 0}));
  EXPECT_EQ(receiver.state().updateRate, 10);
  EXPECT_EQ(receiver.savedSettings().updateRate, 20);
  receiver.receive(restart(0));
  EXPECT_EQ(receiver.state().updateRate, 20);
  EXPECT_EQ(receiver.state().powerMode, 0);
  EXPECT_EQ(receiver.state().attributes, (std::map<std::uint16_t, std::uint8_t>{{0x0E00, 1}}));
}

TEST(Start, FindsTheSettingsThatTheReceiverBeganWithOrTheFactoryDefaultsAfterThose) {
  sim::State state;
  state.updateRate = 4;
  state.outputType = sim::OutputType::Binary;
  sim::Receiver receiver(state);
  receiver.receive(setUpdateRate(20, 0));
  receiver.change([](sim::State& now) { now.outputType = sim::OutputType::None; });
  receiver.receive(restart(0));
  EXPECT_EQ(receiver.state().updateRate, 4);
  EXPECT_EQ(receiver.state().outputType, sim::OutputType::Binary);
  receiver.receive(setUpdateRate(20, 1) + sim::frame(0x0400, {1}));
  EXPECT_EQ(receiver.state().updateRate, 1);
  receiver.receive(restart(0));
  EXPECT_EQ(receiver.state().updateRate, 1);
}

TEST(Start, LeavesTheCountsAndTheIdentity) {
  sim::Receiver receiver;
  receiver.change([](sim::State& state) { state.identity.kernel = {7, 7, 7}; });
  receiver.receive(softReset(3));
  receiver.receive(restart(1));
  receiver.receive(softReset(3));
  EXPECT_EQ(receiver.state().softResets, 2U);
  EXPECT_EQ(receiver.state().restarts, 1U);
  EXPECT_EQ(receiver.state().identity.kernel.x, 7);
}

TEST(Start, BeginsASavedSurveyAnewAtTheFirstFix) {
  sim::Receiver receiver(underOrdinarySky());
  receiver.receive(sim::frame(0x5400, Bytes{1, 0, 0, 0, 60} + Bytes(24) + Bytes{1}));
  receiver.tick(seconds(50));
  EXPECT_EQ(receiver.state().surveyed, seconds(50));
  receiver.receive(softReset(2));
  EXPECT_EQ(receiver.state().surveyed, seconds(0));
  receiver.tick(seconds(27 + 60));
  EXPECT_EQ(receiver.state().surveyed, seconds(59));
  receiver.tick(seconds(1));
  EXPECT_EQ(receiver.state().runningTimingMode(), sim::TimingMode::Static);
}

TEST(Start, LetsASurveyBeginInTheMidstOfALongTick) {
  sim::Receiver receiver(underOrdinarySky());
  receiver.receive(setUpdateRate(0, 1));  // no epoch cuts the tick
  receiver.receive(sim::frame(0x5400, Bytes{1, 0, 0, 0, 60} + Bytes(24) + Bytes{1}));
  receiver.receive(softReset(2));
  receiver.tick(seconds(28 + 59));
  EXPECT_EQ(receiver.state().surveyed, seconds(59));
}

TEST(Start, IsColdWhenTheReceiverWasOff) {
  sim::State state = underOrdinarySky();
  state.startTimes.silence = seconds(2);
  sim::Receiver receiver(state);
  receiver.startCold();
  EXPECT_EQ(receiver.receive(kRateQuery), Bytes{});
  EXPECT_TRUE(receiver.state().startup.cold);
  EXPECT_EQ(secondsToFix(receiver), 35);
  EXPECT_FALSE(receiver.state().startup.cold);
  EXPECT_EQ(receiver.state().softResets + receiver.state().restarts, 0U);
}

TEST(Start, FindsNoFixWhereThereAreNoSatellites) {
  sim::Receiver receiver(underOrdinarySky());
  receiver.change([](sim::State& state) { state.sky.resize(2); });
  receiver.receive(softReset(3));
  receiver.tick(seconds(1000));
  EXPECT_EQ(receiver.state().solution().fixMode, 0);
  EXPECT_TRUE(receiver.state().startup.cold);
  receiver.change([](sim::State& state) { state.sky = sim::ordinarySky(); });
  receiver.tick(seconds(1));
  EXPECT_EQ(receiver.state().solution().fixMode, 3);
  EXPECT_FALSE(receiver.state().startup.cold);
}

}  // namespace
}  // namespace orb::test
