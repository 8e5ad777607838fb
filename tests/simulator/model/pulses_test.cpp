#include <gtest/gtest.h>

#include "receivers.h"

namespace orb::test {
namespace {

using std::chrono::seconds;

TEST(Pulses, HaveTheWidthAndTheCableDelayThatWereSet) {
  sim::Receiver receiver;
  receiver.receive(sim::frame(0x6501, hex("00 01 86 A0 00")));  // 100 ms
  receiver.receive(sim::frame(0x4500, hex("00 00 0A F0 00")));  // 28 ns
  const auto pulses = receiver.state().pulses();
  ASSERT_TRUE(pulses);
  EXPECT_EQ(pulses->width, 100000U);
  EXPECT_DOUBLE_EQ(pulses->offset, -28);
}

TEST(Pulses, FollowTheTimeReference) {
  sim::Receiver receiver;
  receiver.change([](sim::State& state) { state.utcOffset = 12; });
  EXPECT_DOUBLE_EQ(receiver.state().pulses()->offset, 0);
  receiver.receive(sim::frame(0x5500, {2, 1, 0}));
  EXPECT_DOUBLE_EQ(receiver.state().pulses()->offset, 12);
}

TEST(Pulses, AreHeldBackAsTheirModeSays) {
  sim::State state;
  const auto pulsesIn = [&](std::uint8_t mode) {
    state.ppsOutput.mode = mode;
    return state.pulses().has_value();
  };
  EXPECT_TRUE(pulsesIn(0) && pulsesIn(1) && pulsesIn(2) && pulsesIn(3));
  state.navigation.fixMode = 0;  // some satellites, too few for a fix
  EXPECT_TRUE(pulsesIn(0) && pulsesIn(2) && pulsesIn(3));
  EXPECT_FALSE(pulsesIn(1));
  state.navigation.satellites = 0;
  EXPECT_TRUE(pulsesIn(0) && pulsesIn(3));
  EXPECT_FALSE(pulsesIn(1) || pulsesIn(2));
}

TEST(Pulses, AreNoneWhileTheReceiverIsStillSilentAfterARestart) {
  sim::Receiver receiver;
  receiver.change([](sim::State& state) { state.startTimes.silence = seconds(1); });
  receiver.receive(sim::frame(0x643F, {0}));
  EXPECT_FALSE(receiver.state().pulses());
  receiver.tick(seconds(1));
  EXPECT_TRUE(receiver.state().pulses());
}

TEST(Receiver, ShowsItsTimeReferenceInTheNanosecondsOfItsGpsTime) {
  sim::Receiver receiver;
  const auto nanoseconds = [&] {
    const Bytes body = replyTo(0x6420, receiver);
    return Bytes(body.begin() + 4, body.begin() + 8);
  };
  EXPECT_EQ(nanoseconds(), hex("00 00 00 00"));
  receiver.receive(sim::frame(0x5500, {2, 1, 0}));
  EXPECT_EQ(nanoseconds(), hex("00 00 00 07"));
  receiver.receive(sim::frame(0x5500, {2, 0, 0}));
  EXPECT_EQ(nanoseconds(), hex("00 00 00 00"));
}

TEST(Receiver, TellsOfInterferenceOnlyWhileItLooksForIt) {
  sim::Receiver receiver;
  receiver.change([](sim::State& state) { state.interferenceStatus = 3; });
  const auto report = [&] { return replyTo(0x6407, receiver); };
  EXPECT_EQ(report(), hex("00 00"));
  receiver.receive(sim::frame(0x6406, {1, 0}));
  EXPECT_EQ(report(), hex("01 03"));
}

}  // namespace
}  // namespace orb::test
