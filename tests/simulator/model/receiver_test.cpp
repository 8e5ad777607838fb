#include "orb-sim/receiver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "support/hex_text.h"

namespace orb::test {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;

const Bytes kRevisionQuery = hex("A0 A1 00 02 02 01 03 0D 0A");
const Bytes kRateQuery = hex("A0 A1 00 01 10 10 0D 0A");
const Bytes kRateAnswer = hex("A0 A1 00 02 83 10 93 0D 0A A0 A1 00 02 86 01 87 0D 0A");

TEST(Receiver, AcknowledgesTheRevisionQueryAndThenAnswersIt) {
  sim::Receiver receiver;
  const Bytes answer =
      hex("A0 A1 00 02 83 02 81 0D 0A "
          "A0 A1 00 0E 80 01 00 01 00 0C 00 01 02 00 00 18 03 0F 9B 0D 0A");
  EXPECT_EQ(receiver.receive(kRevisionQuery), answer);
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 02 02 00 02 0D 0A")), answer);
}

TEST(Receiver, ReportsTheIdentityItIsGiven) {
  sim::State state;
  state.identity.kernel = {1, 0, 12};
  state.identity.odm = {7, 8, 9};
  state.identity.revisionYear = 25;
  state.identity.versionExtension = std::string(40, 'x');
  sim::Receiver receiver(state);
  const Bytes revision = receiver.receive(kRevisionQuery);
  EXPECT_EQ(Bytes(revision.begin() + 9, revision.end() - 3),
            hex("A0 A1 00 0E 80 01 00 01 00 0C 00 07 08 09 00 19 03 0F"));
  const Bytes extension = receiver.receive(hex("A0 A1 00 02 64 7D 19 0D 0A"));
  EXPECT_EQ(extension,
            hex("A0 A1 00 02 83 64 E7 0D 0A A0 A1 00 22 64 FE") + Bytes(32, 'x') + hex("9A 0D 0A"));
}

TEST(Receiver, FillsAShortVersionExtensionUpWithZeros) {
  sim::Receiver receiver;
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 02 64 7D 19 0D 0A")),
            hex("A0 A1 00 02 83 64 E7 0D 0A "
                "A0 A1 00 22 64 FE 4F 52 42 2D 53 49 4D 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                "00 00 00 00 00 00 00 00 00 00 00 BF 0D 0A"));
}

TEST(Receiver, RefusesMessagesThatItDoesNotKnow) {
  sim::Receiver receiver;
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 02 03 00 03 0D 0A")), hex("A0 A1 00 02 84 03 87 0D 0A"));
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 02 64 01 65 0D 0A")), hex("A0 A1 00 02 84 64 E0 0D 0A"));
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 01 64 64 0D 0A")), hex("A0 A1 00 02 84 64 E0 0D 0A"));
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 02 FF FF 00 0D 0A")), hex("A0 A1 00 02 84 FF 7B 0D 0A"));
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 02 83 02 81 0D 0A")), hex("A0 A1 00 02 84 83 07 0D 0A"));
}

TEST(Receiver, RefusesAQueryOfTheWrongLength) {
  sim::Receiver receiver;
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 02 10 00 10 0D 0A")), hex("A0 A1 00 02 84 10 94 0D 0A"));
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 01 02 02 0D 0A")), hex("A0 A1 00 02 84 02 86 0D 0A"));
}

TEST(Receiver, SaysNothingToADamagedCommand) {
  sim::Receiver receiver;
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 02 02 01 04 0D 0A")), Bytes{});
  EXPECT_EQ(receiver.readerCounts().badChecksums, 1U);
  EXPECT_EQ(receiver.receive(kRateQuery), kRateAnswer);
}

TEST(Receiver, AnswersCommandsBackToBackInTheirOrder) {
  sim::Receiver receiver;
  const Bytes unknown = hex("A0 A1 00 02 03 00 03 0D 0A");
  EXPECT_EQ(receiver.receive(unknown + kRateQuery),
            hex("A0 A1 00 02 84 03 87 0D 0A") + kRateAnswer);
}

TEST(Receiver, GivesUpAFrameThatStaysIncomplete) {
  sim::Receiver receiver;
  EXPECT_EQ(receiver.receive(hex("A0 A1 01 00 02")), Bytes{});
  EXPECT_EQ(receiver.untilNextOutput(), milliseconds(1000));
  EXPECT_EQ(receiver.tick(milliseconds(999)), Bytes{});
  EXPECT_EQ(receiver.untilNextOutput(), milliseconds(1));
  EXPECT_EQ(receiver.tick(milliseconds(1)), Bytes{});
  EXPECT_EQ(receiver.receive(kRateQuery), kRateAnswer);
}

TEST(Receiver, AnswersACommandThatAnAbandonedFrameHadSwallowed) {
  sim::Receiver receiver;
  EXPECT_EQ(receiver.receive(hex("A0 A1 01 00") + kRateQuery), Bytes{});
  EXPECT_EQ(receiver.tick(sim::Receiver::kFrameTimeout), kRateAnswer);
}

TEST(Receiver, CountsSoftResetsAndKeepsTheirBody) {
  sim::Receiver receiver;
  EXPECT_EQ(
      receiver.receive(hex("A0 A1 00 0F 01 01 07 BC 01 06 00 00 0A 0E A3 31 00 00 00 2A 0D 0A")),
      hex("A0 A1 00 02 83 01 82 0D 0A"));
  EXPECT_EQ(receiver.state().softResets, 1U);
  EXPECT_EQ(receiver.state().lastSoftReset, hex("01 07 BC 01 06 00 00 0A 0E A3 31 00 00 00"));
}

TEST(Receiver, CountsRestartsAndKeepsTheirFlag) {
  sim::Receiver receiver;
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 03 64 3F 01 5A 0D 0A")),
            hex("A0 A1 00 02 83 64 E7 0D 0A"));
  EXPECT_EQ(receiver.state().restarts, 1U);
  EXPECT_EQ(receiver.state().lastRestart, hex("01"));
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 02 64 3F 5B 0D 0A")), hex("A0 A1 00 02 84 64 E0 0D 0A"));
  EXPECT_EQ(receiver.state().restarts, 1U);
}

TEST(Receiver, FactoryDefaultsLeaveWhatIsNoSetting) {
  sim::Receiver receiver;
  receiver.change([](sim::State& state) {
    state.identity.kernel = {9, 9, 9};
    state.navigation.satellites = 3;
    state.interferenceStatus = 2;
    state.outputType = sim::OutputType::Binary;
    state.serialPort.baudCode = 1;
    state.attributes[0x0900] = 1;
    state.surveyed = seconds(5);
  });
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 02 04 01 05 0D 0A")), hex("A0 A1 00 02 83 04 87 0D 0A"));
  const sim::State state = receiver.state();
  EXPECT_EQ(state.factoryResets, 1U);
  EXPECT_EQ(state.outputType, sim::OutputType::Nmea);
  EXPECT_EQ(state.serialPort.baudCode, 5);
  EXPECT_TRUE(state.attributes.empty());
  EXPECT_EQ(state.surveyed, seconds(0));
  EXPECT_EQ(state.identity.kernel.x, 9);
  EXPECT_EQ(state.navigation.satellites, 3);
  EXPECT_EQ(state.interferenceStatus, 2);
}

TEST(Receiver, ReportsTheGpsTime) {
  sim::Receiver receiver;
  receiver.change([](sim::State& state) { state.time.timeOfWeek = milliseconds(337500); });
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 02 64 20 44 0D 0A")),
            hex("A0 A1 00 02 83 64 E7 0D 0A "
                "A0 A1 00 0F 64 8E 00 05 26 5C 00 00 00 00 08 FC 12 12 07 66 0D 0A"));
}

TEST(Receiver, CarriesTheTimeOfWeekIntoTheNextWeek) {
  sim::Receiver receiver;
  receiver.change([](sim::State& state) {
    state.time = {2300, hours(7 * 24) - milliseconds(1), 18, 7};
  });
  receiver.tick(milliseconds(1));
  EXPECT_EQ(receiver.state().time.week, 2301);
  EXPECT_EQ(receiver.state().time.timeOfWeek, milliseconds(0));
  receiver.tick(hours(2 * 7 * 24) + milliseconds(5));
  EXPECT_EQ(receiver.state().time.week, 2303);
  EXPECT_EQ(receiver.state().time.timeOfWeek, milliseconds(5));
}

TEST(Receiver, RunsASurveyToItsEnd) {
  sim::Receiver receiver;
  Bytes survey(30);
  survey[0] = 1;
  survey[4] = 60;
  receiver.receive(sim::frame(0x5400, survey));
  const auto runningModeAndSeconds = [&] {
    const Bytes answer = receiver.receive(hex("A0 A1 00 01 44 44 0D 0A"));
    return Bytes(answer.end() - 8, answer.end() - 3);
  };
  EXPECT_EQ(runningModeAndSeconds(), hex("01 00 00 00 00"));
  receiver.tick(milliseconds(59999));
  EXPECT_EQ(runningModeAndSeconds(), hex("01 00 00 00 3B"));
  receiver.tick(milliseconds(1));
  EXPECT_EQ(runningModeAndSeconds(), hex("02 00 00 00 3C"));
  receiver.tick(seconds(100));
  EXPECT_EQ(runningModeAndSeconds(), hex("02 00 00 00 3C"));
  EXPECT_EQ(receiver.state().timing.mode, sim::TimingMode::AutoSurvey);

  receiver.receive(sim::frame(0x5400, survey));
  EXPECT_EQ(runningModeAndSeconds(), hex("01 00 00 00 00"));
}

TEST(Receiver, DoesNotSurveyInOtherTimingModes) {
  sim::Receiver receiver;
  receiver.tick(seconds(5000));
  EXPECT_EQ(receiver.state().surveyed, milliseconds(0));
  EXPECT_EQ(receiver.state().runningTimingMode(), sim::TimingMode::Dynamic);
}

class ReceiverOnRandomBytes : public testing::TestWithParam<unsigned int> {};

TEST_P(ReceiverOnRandomBytes, StillAnswers) {
  std::mt19937 random(GetParam());
  const auto byte = [&] { return static_cast<std::uint8_t>(random()); };
  sim::Receiver receiver;
  constexpr std::array<std::uint16_t, 8> kKnown{0x0100, 0x0400, 0x2A00, 0x5400,
                                                0x6201, 0x6402, 0x6419, 0x6501};
  for (int i = 0; i < 20000; ++i) {
    // Known and unknown messages with bodies of any length, a third of them damaged.
    const auto id =
        random() % 2 == 0 ? kKnown[random() % kKnown.size()] : static_cast<std::uint16_t>(random());
    Bytes body(random() % 40);
    std::generate(body.begin(), body.end(), byte);
    Bytes packet = sim::frame(id, body);
    if (random() % 3 == 0) {
      packet[random() % packet.size()] = byte();
    }
    receiver.receive(packet);
  }
  receiver.tick(sim::Receiver::kFrameTimeout);
  receiver.change([](sim::State& state) { state.updateRate = 1; });
  const Bytes answer = receiver.receive(kRateQuery);
  EXPECT_EQ(Bytes(answer.end() - static_cast<std::ptrdiff_t>(kRateAnswer.size()), answer.end()),
            kRateAnswer);
  EXPECT_GT(receiver.readerCounts().frames, 10000U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, ReceiverOnRandomBytes, testing::Range(1U, 5U));

}  // namespace
}  // namespace orb::test
