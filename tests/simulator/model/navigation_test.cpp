#include "model/navigation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "orb-sim/receiver.h"
#include "support/hex_text.h"

namespace orb::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const Bytes kIntervalQuery = hex("A0 A1 00 02 64 30 54 0D 0A");
const Bytes kIntervalAnswer = hex("A0 A1 00 02 83 64 E7 0D 0A A0 A1 00 03 64 98 01 FD 0D 0A");

/// On the equator, on the prime meridian, on the ellipsoid.
sim::State atTheOrigin() {
  sim::State state;
  state.navigation.latitude = 0;
  state.navigation.longitude = 0;
  state.navigation.ellipsoidAltitude = 0;
  return state;
}

const Bytes kAtTheOrigin = hex(
    "A0 A1 00 3B A8 02 09 08 FC 02 0F 76 78 00 00 00 00 00 00 00 00 00 00 00 00 00 00 B9 E6 00 B4 "
    "00 A0 00 5A 00 82 00 55 26 04 43 C4 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 37 0D 0A");

Bytes navigationData(const sim::State& state) {
  return sim::navigationData(state, sim::solve(state));
}

/// A receiver that has been spoken to.
class TalkingReceiver : public testing::Test {
 protected:
  void choose(sim::OutputType type) {
    receiver_.receive(sim::frame(0x0900, {static_cast<std::uint8_t>(type), 0}));
  }

  /// Its output over so many milliseconds, one tick each, one entry for each tick with output.
  std::vector<Bytes> outputOver(int ticks) {
    std::vector<Bytes> output;
    for (; ticks > 0; --ticks) {
      if (Bytes bytes = receiver_.tick(milliseconds(1)); !bytes.empty()) {
        output.push_back(std::move(bytes));
      }
    }
    return output;
  }

  sim::Receiver receiver_{atTheOrigin()};
};

TEST(NavigationData, ReportsTheSolution) { EXPECT_EQ(navigationData(atTheOrigin()), kAtTheOrigin); }

TEST(NavigationData, ReportsTheVelocityOnATrack) {
  sim::State state = atTheOrigin();
  // A hundredth of a degree to the east in 100 s: 11.13 m/s, along the second axis.
  state.track.waypoints = {{milliseconds(0), 0, 0, 0}, {milliseconds(100000), 0, 0.01, 0}};
  Bytes expected = kAtTheOrigin;
  const Bytes velocityAndEnd = hex("00 00 00 00 00 00 04 59 00 00 00 00 6A 0D 0A");
  std::copy(velocityAndEnd.rbegin(), velocityAndEnd.rend(), expected.rbegin());
  EXPECT_EQ(navigationData(state), expected);
}

TEST(NavigationData, ReportsNegativeValuesAsTwosComplement) {
  sim::State state;
  state.time = {0, milliseconds(0), 18, 7};
  state.navigation = {1, 0, -900000000, 0, -100, -200, {1, 2, 3, 4, 5}};
  // The south pole, one metre under the ellipsoid.
  EXPECT_EQ(navigationData(state),
            hex("A0 A1 00 3B A8 01 00 00 00 00 00 00 00 CA 5B 17 00 00 00 00 00 FF FF FF 9C FF FF "
                "FF 38 00 01 00 02 00 03 00 04 00 05 00 00 00 00 00 00 00 00 DA 1C 5E 05 00 00 00 "
                "00 00 00 00 00 00 00 00 00 17 0D 0A"));
}

TEST(Receiver, IsSilentUntilItHasAnsweredSomething) {
  sim::Receiver receiver;
  EXPECT_EQ(receiver.untilNextOutput(), sim::Device::kNever);
  EXPECT_EQ(receiver.tick(seconds(60)), Bytes{});
  receiver.receive(hex("12 34"));
  EXPECT_EQ(receiver.tick(seconds(60)), Bytes{});
  receiver.receive(kIntervalQuery);
  EXPECT_EQ(receiver.untilNextOutput(), milliseconds(1000));
  EXPECT_NE(receiver.tick(seconds(1)), Bytes{});
}

TEST(Receiver, TalksFromTheStartWhenTold) {
  sim::Receiver receiver;
  receiver.talkFromTheStart();
  EXPECT_EQ(receiver.tick(milliseconds(999)), Bytes{});
  EXPECT_NE(receiver.tick(milliseconds(1)), Bytes{});
}

TEST_F(TalkingReceiver, SendsNavigationDataWhileTheOutputIsBinary) {
  choose(sim::OutputType::Binary);
  EXPECT_EQ(outputOver(999), std::vector<Bytes>{});
  const Bytes data = receiver_.tick(milliseconds(1));
  EXPECT_EQ(data, navigationData(receiver_.state()));
  EXPECT_EQ(data.size(), 66U);
}

TEST_F(TalkingReceiver, SendsNothingWhileTheOutputIsNone) {
  choose(sim::OutputType::None);
  EXPECT_EQ(outputOver(3000), std::vector<Bytes>{});
  choose(sim::OutputType{7});
  EXPECT_EQ(outputOver(3000), std::vector<Bytes>{});
}

TEST_F(TalkingReceiver, SendsAtTheUpdateRate) {
  choose(sim::OutputType::Binary);
  receiver_.receive(sim::frame(0x0E00, {20, 0}));
  EXPECT_EQ(receiver_.untilNextOutput(), milliseconds(50));
  EXPECT_EQ(outputOver(1000).size(), 20U);
  receiver_.receive(sim::frame(0x0E00, {0, 0}));
  EXPECT_EQ(receiver_.untilNextOutput(), sim::Device::kNever);
  EXPECT_EQ(outputOver(3000).size(), 0U);
}

TEST_F(TalkingReceiver, SendsAtWholeSecondsOfItsClockAndWholeFractionsOfThem) {
  receiver_.tick(milliseconds(345));
  choose(sim::OutputType::Binary);
  EXPECT_EQ(receiver_.untilNextOutput(), milliseconds(655));
  receiver_.tick(milliseconds(755));
  receiver_.receive(sim::frame(0x0E00, {3, 0}));
  for (const int until : {234, 333, 333, 334}) {
    EXPECT_EQ(receiver_.untilNextOutput(), milliseconds(until));
    EXPECT_NE(receiver_.tick(milliseconds(until)), Bytes{});
  }
}

TEST_F(TalkingReceiver, SendsAfterADelay) {
  receiver_.change([](sim::State& state) { state.outputDelay = milliseconds(70); });
  choose(sim::OutputType::Binary);
  receiver_.receive(sim::frame(0x0E00, {20, 0}));
  EXPECT_EQ(outputOver(119), std::vector<Bytes>{});
  // Of the epoch 70 ms ago; the next one is 20 ms old.
  const Bytes data = receiver_.tick(milliseconds(1));
  EXPECT_EQ(data[9 + 3], 0x78 + 5);
  EXPECT_EQ(receiver_.untilNextOutput(), milliseconds(30));
  EXPECT_EQ(outputOver(1000).size(), 20U);
}

TEST(Jitter, IsDrawnFromTheSeed) {
  const auto firstDelay = [](std::uint64_t seed) {
    sim::State state;
    state.seed = seed;
    state.outputJitter = milliseconds(999);
    sim::Receiver receiver(state);
    receiver.talkFromTheStart();
    receiver.tick(milliseconds(1000));
    return receiver.untilNextOutput();
  };
  EXPECT_EQ(firstDelay(1), firstDelay(1));
  EXPECT_NE(firstDelay(1), firstDelay(2));
}

TEST_F(TalkingReceiver, SendsInOrderWithinItsJitter) {
  receiver_.change([](sim::State& state) {
    state.outputDelay = milliseconds(10);
    state.outputJitter = milliseconds(60);
  });
  choose(sim::OutputType::Binary);
  std::set<int> delays;
  unsigned char last = 0x78;
  for (int time = 1; time <= 100'000; ++time) {
    const Bytes bytes = receiver_.tick(milliseconds(1));
    for (const sim::Frame& data : sim::FrameReader().push(bytes)) {
      delays.insert(time % 1000);
      EXPECT_EQ(data.packet()[9 + 3], static_cast<unsigned char>(last + 100));
      last = data.packet()[9 + 3];
    }
  }
  EXPECT_GE(*delays.begin(), 10);
  EXPECT_LE(*delays.rbegin(), 70);
  EXPECT_GT(delays.size(), 30U);
}

TEST_F(TalkingReceiver, SendsOnceASecondAtMostWhileItSavesPower) {
  choose(sim::OutputType::Binary);
  receiver_.receive(sim::frame(0x0E00, {20, 0}));
  receiver_.receive(sim::frame(0x0C00, {1, 0}));
  EXPECT_EQ(receiver_.untilNextOutput(), milliseconds(1000));
  EXPECT_EQ(outputOver(3000).size(), 3U);
  receiver_.receive(sim::frame(0x0C00, {0, 0}));
  EXPECT_EQ(outputOver(1000).size(), 20U);
  receiver_.receive(sim::frame(0x0C00, {1, 0}));
  receiver_.receive(sim::frame(0x0E00, {0, 0}));
  EXPECT_EQ(outputOver(3000).size(), 0U);
}

TEST_F(TalkingReceiver, SendsEveryEpochOfALongTick) {
  choose(sim::OutputType::Binary);
  const std::vector<sim::Frame> frames = sim::FrameReader().push(receiver_.tick(seconds(5)));
  ASSERT_EQ(frames.size(), 5U);
  // Time of week in hundredths of a second.
  EXPECT_EQ(frames[0].packet()[9 + 3], 0x78 + 100);
  EXPECT_EQ(frames[4].packet()[9 + 3], (0x78 + 500) & 0xFF);
}

TEST_F(TalkingReceiver, SendsNavigationDataAtTheirInterval) {
  choose(sim::OutputType::Binary);
  receiver_.receive(sim::frame(0x642F, {3, 0}));
  EXPECT_EQ(outputOver(9000).size(), 3U);
  receiver_.receive(sim::frame(0x642F, {0, 0}));
  EXPECT_EQ(outputOver(9000).size(), 0U);
}

TEST_F(TalkingReceiver, SendsNavigationDataAtTheEpochAndNotWhenTheirIntervalIsQueried) {
  for (const sim::OutputType type :
       {sim::OutputType::Nmea, sim::OutputType::Binary, sim::OutputType::None}) {
    choose(type);
    EXPECT_EQ(receiver_.receive(kIntervalQuery), kIntervalAnswer);
  }
}

}  // namespace
}  // namespace orb::test
