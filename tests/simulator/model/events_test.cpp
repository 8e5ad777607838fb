#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "model/gps_time.h"
#include "receivers.h"

// What happens to time and to the signals while the receiver runs.

namespace orb::test {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using std::chrono::sys_days;
using Texts = std::vector<std::string>;

constexpr std::uint16_t kQueryGpsTime = 0x6420;
constexpr auto kNewYear = sys_days{2027y / 1 / 1};

/// A receiver that has told the time once a second from the start, with these events.
sim::State talkative(std::vector<sim::TimedEvent> events = {}) {
  sim::State state = underOrdinarySky();
  state.nmeaIntervals = {0, 0, 0, 0, 1};
  state.timeline = std::move(events);
  return state;
}

Texts linesOf(const Bytes& bytes) {
  std::istringstream stream(std::string(bytes.begin(), bytes.end()));
  Texts lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::string field(const std::string& sentence, int number) {
  std::istringstream stream(sentence);
  std::string text;
  for (int i = 0; i <= number; ++i) {
    std::getline(stream, text, ',');
  }
  return text;
}

/// "time status date" of each RMC sentence of so long.
Texts toldIn(milliseconds time, sim::Receiver& receiver) {
  Texts told;
  for (const std::string& line : linesOf(receiver.tick(time))) {
    told.push_back(field(line, 1) + ' ' + field(line, 2) + ' ' + field(line, 9));
  }
  return told;
}

Texts toldIn(milliseconds time, const sim::State& state) {
  sim::Receiver receiver(state);
  receiver.talkFromTheStart();
  return toldIn(time, receiver);
}

sim::State beforeLeapSecond() {
  sim::State state = talkative();
  sim::setUtc(state.time, kNewYear - 2s);
  state.time.leapSecond = kNewYear;
  return state;
}

TEST(LeapSecond, IsThe60thSecondOfItsMinute) {
  EXPECT_EQ(toldIn(4s, beforeLeapSecond()), (Texts{"235959.000 A 311226", "235960.000 A 311226",
                                                   "000000.000 A 010127", "000001.000 A 010127"}));
}

TEST(LeapSecond, HasTenthsToo) {
  sim::State state = beforeLeapSecond();
  state.updateRate = 10;
  const Texts told = toldIn(3s, state);
  EXPECT_EQ(Texts(told.begin() + 18, told.end() - 9),
            (Texts{"235959.900 A 311226", "235960.000 A 311226", "235960.100 A 311226"}));
  EXPECT_EQ(Texts(told.end() - 2, told.end()),
            (Texts{"235960.900 A 311226", "000000.000 A 010127"}));
}

TEST(LeapSecond, IsAnnouncedUntilItIsOver) {
  constexpr std::size_t kNow = 10;
  constexpr std::size_t kToCome = 11;
  sim::Receiver receiver(beforeLeapSecond());
  const auto leapSeconds = [&] {
    const Bytes reply = replyTo(kQueryGpsTime, receiver);
    return std::pair<int, int>(reply.at(kNow), reply.at(kToCome));
  };
  EXPECT_EQ(leapSeconds(), std::pair(18, 19));
  receiver.tick(2999ms);
  EXPECT_EQ(leapSeconds(), std::pair(18, 19));
  receiver.tick(1ms);
  EXPECT_EQ(leapSeconds(), std::pair(19, 19));
}

TEST(LeapSecond, LeavesGpsTimeAsItIs) {
  sim::Receiver receiver(beforeLeapSecond());
  const sim::GpsTime before = receiver.state().time;
  receiver.tick(10s);
  EXPECT_EQ(receiver.state().time.week, before.week);
  EXPECT_EQ(receiver.state().time.timeOfWeek, before.timeOfWeek + 10s);
}

TEST(WeekRollOver, CarriesOnWhereTenBitsOfTheWeekBeginAnew) {
  constexpr std::uint16_t kThirdRollOver = 3 * 1024;
  sim::State state = talkative();
  state.time.week = kThirdRollOver - 1;
  state.time.timeOfWeek = std::chrono::weeks{1} - 1s;
  sim::Receiver receiver(state);
  receiver.talkFromTheStart();
  EXPECT_EQ(toldIn(1s, receiver), Texts{"235942.000 A 201138"});
  const Bytes reply = replyTo(kQueryGpsTime, receiver);
  EXPECT_EQ(Bytes(reply.begin(), reply.begin() + 10), hex("00 00 00 00 00 00 00 00 0C 00"));
  EXPECT_EQ(toldIn(18s, receiver).back(), "000000.000 A 211138");
}

TEST(Event, TakesTheSignalsAwayWhileTheTimeRunsOn) {
  EXPECT_EQ(
      toldIn(5s, talkative({{.at = 1500ms, .signals = false}, {.at = 3500ms, .signals = true}})),
      (Texts{"000101.000 A 080224", "000102.000 V 080224", "000103.000 V 080224",
             "000104.000 A 080224", "000105.000 A 080224"}));
}

TEST(Event, LeavesNoFixAndNoSatelliteWithoutSignals) {
  sim::State state = talkative({{.signals = false}});
  state.nmeaIntervals = {1, 0, 1};
  sim::Receiver receiver(state);
  receiver.talkFromTheStart();
  EXPECT_EQ(linesOf(receiver.tick(1s)),
            (Texts{"$GNGGA,000101.000,,,,,0,00,99.9,,,,,,*71\r", "$GPGSV,1,1,00*79\r"}));
  EXPECT_EQ(receiver.state().solution().fixMode, 0);
}

TEST(Event, TakesAGivenSolutionAwayToo) {
  sim::State state = talkative({{.signals = false}});
  state.sky.clear();
  EXPECT_EQ(toldIn(1s, state), Texts{"000101.000 V 080224"});
}

TEST(Antenna, WithoutSupplyHearsNothingWhateverTheSignals) {
  sim::State state = talkative({{.at = 1500ms, .signals = false}, {.at = 2500ms, .signals = true}});
  state.antennaSupply = false;
  EXPECT_EQ(toldIn(3s, state),
            (Texts{"000101.000 V 080224", "000102.000 V 080224", "000103.000 V 080224"}));
}

TEST(Event, ComesAfterTheEpochThatItCoincidesWith) {
  EXPECT_EQ(toldIn(2s, talkative({{.at = 1s, .signals = false}})),
            (Texts{"000101.000 A 080224", "000102.000 V 080224"}));
}

TEST(Event, RaisesTheInterferenceThatIsDetected) {
  constexpr std::uint16_t kQueryInterference = 0x6407;
  sim::State state = talkative({{.at = 10s, .interferenceStatus = std::uint8_t{3}}});
  state.interferenceDetection = 1;
  sim::Receiver receiver(state);
  EXPECT_EQ(replyTo(kQueryInterference, receiver), hex("01 01"));
  const std::size_t used = receiver.state().satellitesUsed().size();
  receiver.tick(10s);
  EXPECT_EQ(replyTo(kQueryInterference, receiver), hex("01 03"));
  EXPECT_LT(receiver.state().satellitesUsed().size(), used);
}

TEST(Event, MakesTheClockJump) {
  EXPECT_EQ(toldIn(3s, talkative({{.at = 1s, .jump = 1h}})),
            (Texts{"000101.000 A 080224", "010102.000 A 080224", "010103.000 A 080224"}));
  EXPECT_EQ(toldIn(2s, talkative({{.at = 1s, .jump = -2min}})),
            (Texts{"000101.000 A 080224", "235902.000 A 070224"}));
}

TEST(Event, MovesTheEpochsWithAClockThatJumpsByAFraction) {
  sim::Receiver receiver(talkative({{.at = 1s, .jump = 300ms}}));
  receiver.talkFromTheStart();
  EXPECT_EQ(toldIn(1699ms, receiver), Texts{"000101.000 A 080224"});
  EXPECT_EQ(toldIn(1ms, receiver), Texts{"000102.000 A 080224"});
}

TEST(Event, SendsTheClockBackAsAReceiverThatTakesAWeekForOneAThousandWeeksAgo) {
  sim::Receiver receiver(talkative({{.jump = -std::chrono::weeks{1024}}}));
  receiver.talkFromTheStart();
  EXPECT_EQ(toldIn(1s, receiver), Texts{"000101.000 A 240604"});
  EXPECT_EQ(receiver.state().time.week, 2300 - 1024);
}

TEST(Event, LetsTheClockDriftWhichStillTellsWholeSeconds) {
  constexpr int kSeconds = 1'000;
  for (const auto& [drift, told] : {std::pair(1.01, kSeconds + 10), std::pair(1.001, kSeconds + 1),
                                    std::pair(0.999, kSeconds - 1), std::pair(1.0, kSeconds)}) {
    // With the first drift, the last epoch is 11 ms old by then: no millisecond has got lost.
    const Texts times = toldIn(kSeconds * 1s + 11ms, talkative({{.at = 50ms, .clockRate = drift}}));
    EXPECT_EQ(times.size(), told);
    EXPECT_EQ(std::set<std::string>(times.begin(), times.end()).size(), times.size());
    for (const std::string& time : times) {
      ASSERT_EQ(time.substr(6, 6), ".000 A") << time;
    }
  }
}

TEST(Event, LetsADriftingClockCountEachMillisecondOnce) {
  sim::State state = talkative();
  state.updateRate = 50;
  state.clockRate = 1.01;
  sim::Receiver receiver(state);
  receiver.talkFromTheStart();
  receiver.tick(100s);
  const milliseconds passed = receiver.state().time.timeOfWeek - state.time.timeOfWeek;
  EXPECT_LE(std::chrono::abs(passed - 101s), 1ms);
  EXPECT_EQ(receiver.state().sinceBeginning, passed);
}

TEST(Event, HappensAtItsTimeInATickOfAnyLength) {
  const sim::State state = talkative({{.at = 1300ms, .signals = false},
                                      {.at = 1700ms, .clockRate = 1.005},
                                      {.at = 2500ms, .jump = 10s},
                                      {.at = 7100ms, .signals = true},
                                      {.at = 8s, .jump = -1234ms}});
  sim::Receiver whole(state);
  sim::Receiver pieces(state);
  whole.talkFromTheStart();
  pieces.talkFromTheStart();
  Texts told;
  for (int i = 0; i < 12'000; ++i) {
    for (const std::string& time : toldIn(1ms, pieces)) {
      told.push_back(time);
    }
  }
  EXPECT_EQ(toldIn(12s, whole), told);
  EXPECT_GT(told.size(), 10U);
}

TEST(Event, HappensToAReceiverThatIsStillSilent) {
  sim::State state = talkative({{.at = 1s, .clockRate = 2},
                                {.at = 2s, .jump = 1h},
                                {.at = 3s, .clockRate = 1},
                                {.at = 4s, .signals = false}});
  state.startTimes.silence = 5s;
  sim::Receiver receiver(state);
  receiver.startCold();
  receiver.tick(1min);
  EXPECT_TRUE(receiver.state().startup.cold);
  EXPECT_EQ(receiver.state().time.timeOfWeek, sim::GpsTime().timeOfWeek + 1h + 1min + 2s);
}

}  // namespace
}  // namespace orb::test
