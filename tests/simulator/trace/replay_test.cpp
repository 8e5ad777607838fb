#include "orb-sim/replay.h"

#include <gtest/gtest.h>

#include "hex.h"

namespace orb::sim::test {
namespace {

using std::chrono::milliseconds;
using namespace std::chrono_literals;

const Bytes kRate = frame(0x1000);
const Bytes kPower = frame(0x1500);
const Bytes kText = hex("24 0D 0A");

TraceRecord client(milliseconds at, const Bytes& bytes) { return {at, Speaker::Client, bytes}; }
TraceRecord receiver(milliseconds at, const Bytes& bytes) { return {at, Speaker::Receiver, bytes}; }

TEST(ReplayDevice, AnswersAPacketAsTheTraceDoes) {
  ReplayDevice device({client(5ms, kRate), receiver(5ms, hex("01")), client(9ms, kPower),
                       receiver(9ms, hex("02"))});
  EXPECT_EQ(device.receive(kPower), hex("02"));
  EXPECT_EQ(device.receive(kRate), hex("01"));
  EXPECT_EQ(device.refused(), 0U);
}

TEST(ReplayDevice, AnswersEachOccurrenceInTurnAndBeginsAnew) {
  ReplayDevice device({client(1ms, kRate), receiver(1ms, hex("01")), client(2ms, kRate),
                       receiver(2ms, hex("02")), client(3ms, kRate)});
  EXPECT_EQ(device.receive(kRate), hex("01"));
  EXPECT_EQ(device.receive(kRate), hex("02"));
  EXPECT_EQ(device.receive(kRate), Bytes{});
  EXPECT_EQ(device.receive(kRate), hex("01"));
}

TEST(ReplayDevice, RefusesAPacketThatTheTraceDoesNotHave) {
  ReplayDevice device({client(1ms, frame(0x0E00, hex("01 00"))), receiver(1ms, hex("01"))});
  EXPECT_EQ(device.receive(frame(0x0E00, hex("02 00"))), refuse(0x0E00));
  EXPECT_EQ(device.receive(kPower), refuse(0x1500));
  EXPECT_EQ(device.refused(), 2U);
}

TEST(ReplayDevice, KeepsTheRecordedDelays) {
  ReplayDevice device({client(100ms, kRate), receiver(105ms, hex("01")), receiver(120ms, hex("02")),
                       receiver(3100ms, hex("03"))});
  EXPECT_EQ(device.receive(kRate), Bytes{});
  EXPECT_EQ(device.untilNextOutput(), 5ms);
  EXPECT_EQ(device.tick(4ms), Bytes{});
  EXPECT_EQ(device.tick(1ms), hex("01"));
  EXPECT_EQ(device.tick(15ms), hex("02"));
  EXPECT_EQ(device.untilNextOutput(), 2980ms);
  EXPECT_EQ(device.tick(2980ms), hex("03"));
  EXPECT_EQ(device.untilNextOutput(), Device::kNever);
}

TEST(ReplayDevice, AnswersAtOnceWhereItIsFast) {
  ReplayDevice device(
      {client(100ms, kRate), receiver(1099ms, hex("01")), receiver(1100ms, hex("02"))},
      ReplayDevice::Pace::Fast);
  EXPECT_EQ(device.receive(kRate), hex("01"));
  EXPECT_EQ(device.tick(999ms), Bytes{});
  EXPECT_EQ(device.tick(1ms), hex("02"));
}

TEST(ReplayDevice, SendsWhatIsLeftOfAnAnswerBeforeTheNextOne) {
  ReplayDevice device({client(0ms, kRate), receiver(999ms, hex("01")), receiver(1000ms, kText),
                       client(2000ms, kPower), receiver(2000ms, hex("02"))});
  EXPECT_EQ(device.receive(kRate), Bytes{});
  EXPECT_EQ(device.receive(kPower), hex("01 02"));
  EXPECT_EQ(device.tick(5000ms), Bytes{}) << "what nobody had asked for is given up";
}

TEST(ReplayDevice, PlaysFromTheStartWhatCameBeforeTheFirstPacket) {
  const std::vector<TraceRecord> trace{receiver(10ms, hex("01")), receiver(20ms, hex("02")),
                                       client(30ms, kRate), receiver(30ms, hex("03"))};
  ReplayDevice patient(trace);
  EXPECT_EQ(patient.tick(15ms), hex("01"));
  EXPECT_EQ(patient.tick(15ms), hex("02"));
  EXPECT_EQ(patient.tick(5000ms), Bytes{});

  ReplayDevice interrupted(trace);
  EXPECT_EQ(interrupted.tick(15ms), hex("01"));
  EXPECT_EQ(interrupted.receive(kRate), hex("03"));
  EXPECT_EQ(interrupted.tick(5000ms), Bytes{});
}

TEST(ReplayDevice, PutsPacketsTogetherInTheTraceAndOnTheLine) {
  const Bytes firstHalf(kRate.begin(), kRate.begin() + 3);
  const Bytes secondHalf(kRate.begin() + 3, kRate.end());
  ReplayDevice device({client(1ms, hex("55") + firstHalf), client(5ms, secondHalf + kPower),
                       receiver(6ms, hex("01"))});
  EXPECT_EQ(device.receive(firstHalf), Bytes{});
  EXPECT_EQ(device.receive(secondHalf), Bytes{}) << "the answer came behind the second packet";
  EXPECT_EQ(device.receive(kPower), Bytes{});
  EXPECT_EQ(device.tick(1ms), hex("01"));
}

TEST(ReplayDevice, IsSilentWithAnEmptyTrace) {
  ReplayDevice device({});
  EXPECT_EQ(device.untilNextOutput(), Device::kNever);
  EXPECT_EQ(device.receive(hex("01 02 03")), Bytes{});
  EXPECT_EQ(device.receive(kRate), refuse(0x1000));
}

}  // namespace
}  // namespace orb::sim::test
