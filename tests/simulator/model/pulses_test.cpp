#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "receivers.h"

namespace orb::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

using Lines = std::vector<std::string>;

/// A receiver, and what happens at its timing outputs.
struct PulsingReceiver : sim::Receiver {
  explicit PulsingReceiver(const sim::State& state = {}) : sim::Receiver(state) {
    listenToPulses([this](const sim::PulseEvent& event) { lines.push_back(textOf(event)); });
  }

  /// What happens in this time.
  Lines in(milliseconds time) {
    lines.clear();
    tick(time);
    return lines;
  }

  Lines lines;
};

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

TEST(Pulses, ComeWithASatelliteThatIsHeardAlsoWithoutAFix) {
  sim::State state;
  state.ppsOutput.mode = 2;
  state.sky = sim::ordinarySky();
  state.sky.resize(1);
  EXPECT_EQ(state.solution().fixMode, 0);
  EXPECT_TRUE(state.pulses());
  state.signals = false;
  EXPECT_FALSE(state.pulses());
}

TEST(Pulses, AreNoneWhileTheReceiverIsStillSilentAfterARestart) {
  sim::Receiver receiver;
  receiver.change([](sim::State& state) { state.startTimes.silence = seconds(1); });
  receiver.receive(sim::frame(0x643F, {0}));
  EXPECT_FALSE(receiver.state().pulses());
  receiver.tick(seconds(1));
  EXPECT_TRUE(receiver.state().pulses());
}

TEST(PulseEdges, AreAtTheSecondsOfGpsTimeSevenNanosecondsBeforeThoseOfUtc) {
  sim::State state;  // 00:00:60 of GPS time on its day, 18 leap seconds after UTC
  PulsingReceiver receiver(state);
  EXPECT_EQ(receiver.lines, Lines{"2024-02-08T00:00:59.999999993Z pps2 0 Hz"});
  EXPECT_EQ(receiver.in(milliseconds(999)), Lines{});
  EXPECT_EQ(receiver.in(milliseconds(1)), (Lines{"2024-02-08T00:01:00.999999993Z pps rising",
                                                 "2024-02-08T00:01:01.000999993Z pps falling"}));
  EXPECT_EQ(receiver.in(minutes(1)).size(), 120U);
}

TEST(PulseEdges, FollowWidthCableDelayAndTimeReference) {
  PulsingReceiver receiver;
  receiver.receive(sim::frame(0x6501, hex("00 01 86 A0 00")));  // 100 ms
  receiver.receive(sim::frame(0x4500, hex("00 00 0A F0 00")));  // 28 ns
  receiver.receive(sim::frame(0x5500, {0, 1, 0}));              // UTC
  EXPECT_EQ(receiver.in(seconds(1)), (Lines{"2024-02-08T00:01:00.999999972Z pps rising",
                                            "2024-02-08T00:01:01.099999972Z pps falling"}));
  receiver.receive(sim::frame(0x4500, hex("FF FF F5 10 00")));  // -28 ns
  EXPECT_EQ(receiver.in(seconds(1)), (Lines{"2024-02-08T00:01:02.000000028Z pps rising",
                                            "2024-02-08T00:01:02.100000028Z pps falling"}));
}

TEST(PulseEdges, StopAndBeginWithTheFixWhereTheModeAsksForOne) {
  PulsingReceiver receiver(underOrdinarySky());
  receiver.receive(sim::frame(0x5500, {1, 0, 1}));
  EXPECT_EQ(receiver.in(seconds(3)).size(), 6U);
  receiver.receive(sim::frame(0x0100, {2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));  // warm: 28 s
  const Lines lines = receiver.in(seconds(40));
  ASSERT_EQ(lines.size(), 26U);
  EXPECT_EQ(lines.front(), "2024-02-08T00:01:30.999999993Z pps rising");
}

TEST(PulseEdges, AreNoneWhereThePulseHasNoWidthOrDoesNotEnd) {
  PulsingReceiver receiver;
  const auto widthOf = [&](std::uint32_t width) {
    receiver.change([&](sim::State& state) { state.ppsPulseWidth = width; });
    return receiver.in(seconds(1)).size();
  };
  EXPECT_EQ(widthOf(0), 0U);
  EXPECT_EQ(widthOf(1), 2U);
  EXPECT_EQ(widthOf(999'999), 2U);
  EXPECT_EQ(widthOf(1'000'000), 0U);
}

TEST(PulseEdges, FollowTheReceiversClockOverTheEndOfAWeek) {
  sim::State state;
  state.time.timeOfWeek = seconds(7 * 86400 - 2);
  state.clockRate = 1000;
  PulsingReceiver receiver(state);
  const Lines lines = receiver.in(milliseconds(1));
  EXPECT_EQ(lines, Lines({"2024-02-10T23:59:40.999999993Z pps rising",
                          "2024-02-10T23:59:41.000999993Z pps falling"}));
  Lines rising = receiver.in(milliseconds(3));
  std::erase_if(rising, [](const std::string& line) {
    return line.back() != 'g' || line.find("rising") == std::string::npos;
  });
  EXPECT_EQ(rising, (Lines{"2024-02-10T23:59:41.999999993Z pps rising",
                           "2024-02-10T23:59:42.999999993Z pps rising",
                           "2024-02-10T23:59:43.999999993Z pps rising"}));
  receiver.change([](sim::State& changed) { changed.clockRate = 0; });
  EXPECT_EQ(receiver.in(minutes(1)), Lines{});
}

TEST(PulseEdges, PassALeapSecond) {
  sim::State state;
  state.time.timeOfWeek = std::chrono::days(5) + seconds(18) - milliseconds(1500);
  state.time.leapSecond.emplace(std::chrono::sys_days(std::chrono::year(2024) / 2 / 9));
  state.ppsPulseWidth = 100'000;
  const auto lines = [&] { return PulsingReceiver(state).in(seconds(4)); };
  EXPECT_EQ(
      lines(),
      (Lines{
          "2024-02-08T23:59:58.999999993Z pps rising", "2024-02-08T23:59:59.099999993Z pps falling",
          "2024-02-08T23:59:59.999999993Z pps rising", "2024-02-08T23:59:60.099999993Z pps falling",
          "2024-02-08T23:59:60.999999993Z pps rising", "2024-02-09T00:00:00.099999993Z pps falling",
          "2024-02-09T00:00:00.999999993Z pps rising",
          "2024-02-09T00:00:01.099999993Z pps falling"}));
  state.ppsOutput.alignSource = 1;  // UTC
  EXPECT_EQ(lines().at(2), "2024-02-08T23:59:60.000000000Z pps rising");
  state.ppsPulseWidth = 999'999;
  state.cableDelay = -500'000;  // later by 5 us
  EXPECT_EQ(lines().at(3), "2024-02-09T00:00:00.000004000Z pps falling");
}

TEST(PulseEdges, WakeTheLineInTime) {
  PulsingReceiver receiver;
  receiver.tick(milliseconds(1300));
  EXPECT_EQ(receiver.untilNextOutput(), milliseconds(700));
  receiver.change([](sim::State& state) { state.clockRate = 0.5; });
  EXPECT_EQ(receiver.untilNextOutput(), milliseconds(1400));
  EXPECT_EQ(sim::Receiver().untilNextOutput(), sim::Device::kNever) << "where nobody listens";
}

TEST(SecondPulseOutput, TellsItsFrequencyWhenItChanges) {
  PulsingReceiver receiver;
  receiver.lines.clear();
  receiver.receive(sim::frame(0x6503, hex("00 98 96 80 00")));  // 10 MHz, not to be kept
  receiver.receive(sim::frame(0x6503, hex("00 98 96 80 00")));
  EXPECT_EQ(receiver.lines, Lines{"2024-02-08T00:00:59.999999993Z pps2 10000000 Hz"});
  receiver.receive(sim::frame(0x643F, {0}));  // a restart
  EXPECT_EQ(receiver.lines.back(), "2024-02-08T00:00:59.999999993Z pps2 0 Hz");
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
