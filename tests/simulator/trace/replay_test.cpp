#include "orb-sim/replay.h"
#include "rate_query.h"
#include "timeline.h"

#include <gtest/gtest.h>

namespace orb::test {
namespace {

using std::chrono::milliseconds;
using namespace std::chrono_literals;

const sim::Bytes kPower = sim::frame(0x1500);
const sim::Bytes kText = hex("24 0D 0A");

sim::TraceRecord client(milliseconds at, const sim::Bytes& bytes) {
  return {at, sim::Speaker::Client, bytes};
}
sim::TraceRecord receiver(milliseconds at, const sim::Bytes& bytes) {
  return {at, sim::Speaker::Receiver, bytes};
}

TEST(ReplayDevice, AnswersAPacketAsTheTraceDoes) {
  sim::ReplayDevice device({client(5ms, kRateQuery), receiver(5ms, hex("01")), client(9ms, kPower),
                            receiver(9ms, hex("02"))});
  EXPECT_EQ(device.receive(kPower), hex("02"));
  EXPECT_EQ(device.receive(kRateQuery), hex("01"));
}

TEST(ReplayDevice, AnswersEachOccurrenceInTurnAndBeginsAnew) {
  sim::ReplayDevice device({client(1ms, kRateQuery), receiver(1ms, hex("01")),
                            client(2ms, kRateQuery), receiver(2ms, hex("02")),
                            client(3ms, kRateQuery)});
  EXPECT_EQ(device.receive(kRateQuery), hex("01"));
  EXPECT_EQ(device.receive(kRateQuery), hex("02"));
  EXPECT_EQ(device.receive(kRateQuery), sim::Bytes{});
  EXPECT_EQ(device.receive(kRateQuery), hex("01"));
}

TEST(ReplayDevice, RefusesAPacketThatTheTraceDoesNotHave) {
  sim::ReplayDevice device(
      {client(1ms, sim::frame(0x0E00, hex("01 00"))), receiver(1ms, hex("01"))});
  EXPECT_EQ(device.receive(sim::frame(0x0E00, hex("02 00"))), sim::refuse(0x0E00));
  EXPECT_EQ(device.receive(kPower), sim::refuse(0x1500));
}

TEST(ReplayDevice, AnswersAnUnknownPacketAsItIsTold) {
  std::vector<sim::Bytes> unknown;
  const auto answer = [&unknown](const sim::Frame& packet) {
    unknown.push_back(packet.payload);
    return hex("07");
  };
  sim::ReplayDevice device({client(1ms, kRateQuery), receiver(1ms, hex("01"))},
                           sim::ReplayDevice::Pace::Fast, answer);
  EXPECT_EQ(device.receive(kRateQuery), hex("01"));
  EXPECT_EQ(device.receive(kPower), hex("07"));
  EXPECT_EQ(unknown, std::vector<sim::Bytes>{hex("15")});
}

TEST(ReplayDevice, KeepsTheRecordedDelays) {
  sim::ReplayDevice device({client(100ms, kRateQuery), receiver(105ms, hex("01")),
                            receiver(120ms, hex("02")), receiver(3100ms, hex("03"))});
  EXPECT_EQ(timelineOf(device, kRateQuery, 2000), (Timeline{{5, hex("01")}, {20, hex("02")}}));
  EXPECT_EQ(device.untilNextOutput(), 1000ms);
  EXPECT_EQ(device.tick(1000ms), hex("03"));
  EXPECT_EQ(device.untilNextOutput(), sim::Device::kNever);
}

TEST(ReplayDevice, AnswersAtOnceWhereItIsFast) {
  sim::ReplayDevice device(
      {client(100ms, kRateQuery), receiver(1099ms, hex("01")), receiver(1100ms, hex("02"))},
      sim::ReplayDevice::Pace::Fast);
  EXPECT_EQ(timelineOf(device, kRateQuery, 2000), (Timeline{{0, hex("01")}, {1000, hex("02")}}));
}

TEST(ReplayDevice, SendsWhatIsLeftOfAnAnswerBeforeTheNextOne) {
  sim::ReplayDevice device({client(0ms, kRateQuery), receiver(999ms, hex("01")),
                            receiver(1000ms, kText), client(2000ms, kPower),
                            receiver(2000ms, hex("02"))});
  EXPECT_EQ(device.receive(kRateQuery), sim::Bytes{});
  EXPECT_EQ(device.receive(kPower), hex("01 02"));
  EXPECT_EQ(device.tick(5000ms), sim::Bytes{}) << "what nobody had asked for is given up";
}

TEST(ReplayDevice, PlaysFromTheStartWhatCameBeforeTheFirstPacket) {
  const std::vector<sim::TraceRecord> trace{receiver(10ms, hex("01")), receiver(20ms, hex("02")),
                                            client(30ms, kRateQuery), receiver(30ms, hex("03"))};
  sim::ReplayDevice patient(trace);
  EXPECT_EQ(timelineOf(patient, {}, 5000), (Timeline{{10, hex("01")}, {20, hex("02")}}));

  sim::ReplayDevice interrupted(trace);
  EXPECT_EQ(interrupted.tick(15ms), hex("01"));
  EXPECT_EQ(interrupted.receive(kRateQuery), hex("03"));
  EXPECT_EQ(interrupted.tick(5000ms), sim::Bytes{});
}

TEST(ReplayDevice, PutsPacketsTogetherInTheTraceAndOnTheLine) {
  const sim::Bytes firstHalf(kRateQuery.begin(), kRateQuery.begin() + 3);
  const sim::Bytes secondHalf(kRateQuery.begin() + 3, kRateQuery.end());
  sim::ReplayDevice device({client(1ms, hex("55") + firstHalf), client(5ms, secondHalf + kPower),
                            receiver(6ms, hex("01"))});
  EXPECT_EQ(device.receive(firstHalf), sim::Bytes{});
  EXPECT_EQ(device.receive(secondHalf), sim::Bytes{}) << "the answer came after the second packet";
  EXPECT_EQ(device.receive(kPower), sim::Bytes{});
  EXPECT_EQ(device.tick(1ms), hex("01"));
}

TEST(ReplayDevice, IsSilentWithAnEmptyTrace) {
  sim::ReplayDevice device({});
  EXPECT_EQ(device.untilNextOutput(), sim::Device::kNever);
  EXPECT_EQ(device.receive(hex("01 02 03")), sim::Bytes{});
  EXPECT_EQ(device.receive(kRateQuery), sim::refuse(0x1000));
}

}  // namespace
}  // namespace orb::test
