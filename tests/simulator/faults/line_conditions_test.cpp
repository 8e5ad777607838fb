#include "orb-sim/line_conditions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "orb-sim/faults.h"
#include "orb-sim/receiver.h"
#include "rate_query.h"
#include "timeline.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;
using sim::FaultKind;
using std::chrono::milliseconds;

const Bytes kPowerModeQuery = sim::frame(0x1500);
const Bytes kPowerModeAnswer = sim::acknowledge(0x1500) + sim::frame(0xB900, {0});

/// Keeps what it hears, and says what it is told to, at once or with the next tick.
class Recorder : public sim::Device {
 public:
  Bytes receive(const Bytes& bytes) override {
    sim::append(heard, bytes);
    return std::exchange(answer, {});
  }
  Bytes tick(milliseconds) override { return std::exchange(output, {}); }
  milliseconds untilNextOutput() const override { return output.empty() ? kNever : 0ms; }
  bool takeHangUp() override { return std::exchange(hangUp, false); }
  unsigned int speed() const override { return baud; }

  Bytes heard;
  Bytes answer;
  Bytes output;
  bool hangUp = false;
  unsigned int baud = 0;
};

class LineShaperBefore : public testing::Test {
 protected:
  LineShaperBefore() {
    receiver_.change([](sim::State& state) { state.outputType = sim::OutputType::None; });
  }

  sim::Receiver receiver_;
  Recorder recorder_;
  sim::LineConditions conditions_;
};

TEST_F(LineShaperBefore, AReceiverChangesNothingUnlessToldTo) {
  sim::LineShaper line(receiver_, conditions_, 1);
  EXPECT_EQ(line.receive(kRateQuery), kRateAnswer);
  EXPECT_EQ(line.tick(10s), Bytes{});
  EXPECT_EQ(line.untilNextOutput(), receiver_.untilNextOutput());
}

// 9600 baud are 960 bytes a second.
TEST_F(LineShaperBefore, AReceiverTakesNoMoreThanFitsOnTheLine) {
  conditions_.baud = 9600;
  sim::LineShaper line(recorder_, conditions_, 1);
  line.receive(Bytes(5000, 0x5A));
  EXPECT_FALSE(line.takesMore());
  line.tick(6s);
  EXPECT_TRUE(line.takesMore());
  recorder_.answer = Bytes(5000, 0x5A);
  line.receive({0x5A});
  line.tick(10ms);
  EXPECT_FALSE(line.takesMore());
  line.tick(6s);
  EXPECT_TRUE(line.takesMore());
}

TEST_F(LineShaperBefore, AReceiverTakesNoMoreThanIsOnItsWay) {
  conditions_.latency = 10s;
  sim::LineShaper line(receiver_, conditions_, 1);
  line.receive(Bytes(70000, 0x5A));
  EXPECT_FALSE(line.takesMore());
  line.tick(11s);
  EXPECT_TRUE(line.takesMore());
}

TEST_F(LineShaperBefore, AFaultyReceiverTakesNoMoreThanItsDelayedAnswersAllow) {
  sim::FaultyDevice faulty(receiver_, {{.kind = FaultKind::LateReply, .delay = 10s}}, 1);
  sim::LineShaper line(faulty, conditions_, 1);
  for (int query = 0; query < 10000; ++query) {
    line.receive(kRateQuery);
  }
  EXPECT_FALSE(line.takesMore());
  line.tick(11s);
  EXPECT_TRUE(line.takesMore());
}

TEST_F(LineShaperBefore, AReceiverDelaysEachAnswerByTheLatencyFromItsOwnMessage) {
  conditions_.latency = 30ms;
  sim::LineShaper line(receiver_, conditions_, 1);
  EXPECT_EQ(timelineOf(line, kRateQuery, 20), Timeline{});
  EXPECT_EQ(line.untilNextOutput(), 10ms);
  EXPECT_EQ(timelineOf(line, kPowerModeQuery, 100),
            (Timeline{{10, kRateAnswer}, {30, kPowerModeAnswer}}));
}

// Seed 6 draws 9, 7, 14 and 4 ms for the first four messages. The second does not overtake.
TEST_F(LineShaperBefore, AReceiverDrawsASpreadForEachMessage) {
  conditions_.latency = 100ms;
  conditions_.spread = 20ms;
  sim::LineShaper line(receiver_, conditions_, 6);
  EXPECT_EQ(timelineOf(line, kRateQuery + kPowerModeQuery + kRateQuery, 114),
            (Timeline{{109, kRateAnswer + kPowerModeAnswer}, {114, kRateAnswer}}));
  EXPECT_EQ(timelineOf(line, kPowerModeQuery, 200), (Timeline{{104, kPowerModeAnswer}}));
}

TEST_F(LineShaperBefore, ATalkerDoesNotDelayWhatIsSaidUnasked) {
  conditions_.latency = 1000ms;
  sim::LineShaper line(recorder_, conditions_, 1);
  line.receive(hex("01"));
  recorder_.output = hex("02");
  EXPECT_EQ(line.untilNextOutput(), 0ms);
  EXPECT_EQ(line.tick(0ms), hex("02"));
}

TEST_F(LineShaperBefore, AListenerPacesWhatTheClientWrites) {
  conditions_.baud = 9600;  // 0.96 bytes a millisecond
  sim::LineShaper line(recorder_, conditions_, 1);
  const Bytes written(100, 0x55);
  line.receive(written);
  EXPECT_EQ(recorder_.heard, Bytes{});
  EXPECT_EQ(line.untilNextOutput(), 2ms);
  line.tick(50ms);
  EXPECT_EQ(recorder_.heard.size(), 48U);
  line.tick(54ms);
  EXPECT_EQ(recorder_.heard.size(), 99U);
  line.tick(1ms);
  EXPECT_EQ(recorder_.heard, written);
}

TEST_F(LineShaperBefore, AReceiverPacesAnExchangeFromFirstBitToLast) {
  conditions_.baud = 9600;
  conditions_.latency = 50ms;
  sim::LineShaper line(receiver_, conditions_, 1);
  // 8 bytes take 8.3 ms, and are heard after 9 and 50 more; the answer's 18 bytes take 18.75 ms.
  const Timeline output = timelineOf(line, kRateQuery, 200);
  ASSERT_EQ(output.size(), 18U);
  EXPECT_EQ(output.front().first, 9 + 50 + 2);
  EXPECT_EQ(output.back().first, 9 + 50 + 19);
}

TEST_F(LineShaperBefore, ATalkerLosesWhatIsSaidUnaskedWhenTooMuchWaits) {
  conditions_.baud = 4800;
  sim::LineShaper line(recorder_, conditions_, 1);
  for (int i = 0; i < 3; ++i) {
    recorder_.output = Bytes(3000, 0x11);
    line.tick(0ms);
  }
  recorder_.answer = hex("22");
  line.receive(hex("01"));
  const Bytes said = line.tick(60s);
  EXPECT_EQ(said.size(), 6001U);
  EXPECT_EQ(said.back(), 0x22) << "an answer is never lost";
}

TEST_F(LineShaperBefore, AReceiverChatters) {
  conditions_.chatterInterval = 100ms;
  conditions_.chatter = "hm\n";
  sim::LineShaper line(receiver_, conditions_, 1);
  EXPECT_EQ(line.untilNextOutput(), 100ms);
  EXPECT_EQ(line.tick(99ms), Bytes{});
  EXPECT_EQ(line.tick(1ms), hex("68 6D 0A"));
  EXPECT_EQ(line.tick(250ms), hex("68 6D 0A 68 6D 0A"));
  EXPECT_EQ(line.untilNextOutput(), 50ms);
}

TEST_F(LineShaperBefore, ATalkerDoesNotChatterIntoABusyLine) {
  conditions_.baud = 9600;
  conditions_.chatterInterval = 10ms;
  sim::LineShaper line(recorder_, conditions_, 1);
  recorder_.output = Bytes(100, 0x11);
  line.tick(0ms);
  EXPECT_EQ(line.tick(105ms), Bytes(100, 0x11));
  EXPECT_EQ(line.tick(5ms), Bytes{}) << "no text has waited for its turn";
  EXPECT_EQ(line.tick(100ms).at(0), 'c');
}

TEST_F(LineShaperBefore, ADeviceThatDropsTheLineHandsTheHangUpOn) {
  sim::LineShaper line(recorder_, conditions_, 1);
  EXPECT_FALSE(line.takeHangUp());
  recorder_.answer = hex("01");
  recorder_.hangUp = true;
  EXPECT_EQ(line.receive(hex("00")), hex("01")) << "what is due comes first";
  EXPECT_EQ(line.receive(hex("FF")), Bytes{});
  EXPECT_EQ(recorder_.heard, hex("00")) << "the line is down";
  recorder_.output = hex("02");
  EXPECT_EQ(line.tick(1ms), Bytes{});
  EXPECT_TRUE(line.takeHangUp());
  EXPECT_FALSE(line.takeHangUp());
  EXPECT_EQ(line.tick(1ms), hex("02")) << "the new line carries what was said meanwhile";
}

TEST_F(LineShaperBefore, ADeviceThatDropsTheLineLosesWhatIsOnItsWay) {
  conditions_.baud = 9600;
  conditions_.latency = 10ms;
  sim::LineShaper line(recorder_, conditions_, 1);
  recorder_.output = Bytes(50, 0x11);
  line.receive(Bytes(50, 0x22));
  line.tick(30ms);
  const std::size_t heard = recorder_.heard.size();
  recorder_.hangUp = true;
  line.tick(1ms);
  EXPECT_TRUE(line.takeHangUp());
  EXPECT_EQ(line.tick(1s), Bytes{});
  EXPECT_LE(recorder_.heard.size(), heard + 1);
}

TEST_F(LineShaperBefore, AFaultyDeviceKeepsThePiecesOfALateAnswerApart) {
  sim::FaultyDevice faulty(receiver_, {{.kind = FaultKind::Pieces, .delay = 5ms, .length = 8}}, 1);
  conditions_.latency = 100ms;
  sim::LineShaper line(faulty, conditions_, 1);
  const Bytes first(kRateAnswer.begin(), kRateAnswer.end() - 1);
  EXPECT_EQ(timelineOf(line, kRateQuery, 200), (Timeline{{100, first}, {105, hex("0A")}}));
}

/// The query of a client whose end has this speed, and what it hears.
Bytes heardAt(unsigned int baud, sim::LineShaper& line, const Bytes& query) {
  line.setClientSpeed(baud);
  Bytes heard = line.receive(query);
  sim::append(heard, line.tick(1s));
  return heard;
}

constexpr std::uint16_t kSetSerialPort = 0x0500;
constexpr std::uint8_t kCodeOf9600 = 1;

TEST_F(LineShaperBefore, AReceiverOfAnotherSpeedTurnsAllBytesIntoOthers) {
  conditions_.checksSpeed = true;
  sim::LineShaper line(recorder_, conditions_, 1);
  recorder_.baud = 115200;  // after the line was made
  line.tick(1ms);
  EXPECT_EQ(line.speed(), 115200U);

  recorder_.answer = Bytes(1000, 0x41);
  const Bytes heard = heardAt(9600, line, kRateQuery);
  EXPECT_EQ(recorder_.heard.size(), kRateQuery.size());
  for (std::size_t i = 0; i < kRateQuery.size(); ++i) {
    EXPECT_NE(recorder_.heard[i], kRateQuery[i]);
  }
  EXPECT_EQ(heard.size(), 1000U);
  EXPECT_EQ(std::count(heard.begin(), heard.end(), 0x41), 0);

  recorder_.heard.clear();
  recorder_.answer = kRateAnswer;
  EXPECT_EQ(heardAt(115200, line, kRateQuery), kRateAnswer);
  EXPECT_EQ(recorder_.heard, kRateQuery);
}

TEST_F(LineShaperBefore, AReceiverOfAnotherSpeedTurnsBytesIntoThoseOfTheSeed) {
  conditions_.checksSpeed = true;
  recorder_.baud = 115200;
  const auto heardWith = [&](std::uint64_t seed) {
    sim::LineShaper line(recorder_, conditions_, seed);
    recorder_.answer = Bytes(20, 0x41);
    return heardAt(0, line, kRateQuery);
  };
  const Bytes heard = heardWith(1);
  EXPECT_EQ(heardWith(1), heard);
  EXPECT_NE(heardWith(2), heard);
}

TEST_F(LineShaperBefore, AReceiverOfAnotherSpeedChangesNothingUnlessToldTo) {
  sim::LineShaper line(receiver_, conditions_, 1);
  EXPECT_EQ(line.speed(), 0U);
  EXPECT_EQ(heardAt(4800, line, kRateQuery), kRateAnswer);
}

TEST_F(LineShaperBefore, AReceiverWhoseSpeedIsSetAcknowledgesAtTheOldOne) {
  conditions_.checksSpeed = true;
  conditions_.baud = 115200;
  sim::LineShaper line(receiver_, conditions_, 1);
  EXPECT_EQ(heardAt(115200, line, sim::frame(kSetSerialPort, {0, kCodeOf9600, 0})),
            sim::acknowledge(kSetSerialPort));
  EXPECT_EQ(line.speed(), 9600U);
  EXPECT_NE(heardAt(115200, line, kRateQuery), kRateAnswer);
  EXPECT_EQ(heardAt(9600, line, kRateQuery), kRateAnswer);
}

TEST_F(LineShaperBefore, AReceiverWhoseSpeedIsSetKeepsThatPace) {
  conditions_.checksSpeed = true;
  conditions_.baud = 115200;
  sim::LineShaper line(recorder_, conditions_, 1);
  recorder_.baud = 9600;
  line.tick(1ms);
  line.setClientSpeed(9600);
  recorder_.output = Bytes(2000, 0x41);
  line.tick(1ms);
  EXPECT_NEAR(static_cast<double>(line.tick(1s).size()), 960, 2);
}

TEST_F(LineShaperBefore, AReceiverThatRestartsHasTheSpeedThatWasKept) {
  conditions_.checksSpeed = true;
  sim::LineShaper line(receiver_, conditions_, 1);
  const auto set = [&](std::uint8_t port, std::uint8_t code, std::uint8_t attribute) {
    heardAt(line.speed(), line, sim::frame(kSetSerialPort, {port, code, attribute}));
    return line.speed();
  };
  EXPECT_EQ(set(0, 2, 1), 19200U);
  EXPECT_EQ(set(0, kCodeOf9600, 0), 9600U);
  EXPECT_EQ(set(1, 4, 0), 9600U) << "another port";
  EXPECT_EQ(set(0, 6, 0), 9600U) << "no speed";
  heardAt(9600, line, sim::frame(0x643F, {0}));  // a restart
  EXPECT_EQ(line.speed(), 19200U);
}

}  // namespace
}  // namespace orb::test
