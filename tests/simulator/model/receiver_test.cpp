#include "orb-sim/receiver.h"

#include <gtest/gtest.h>

#include "support/hex_text.h"

namespace orb::test {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;

const Bytes kRevisionQuery = hex("A0 A1 00 02 02 01 03 0D 0A");
const Bytes kExtensionQuery = hex("A0 A1 00 02 64 7D 19 0D 0A");
const Bytes kRateQuery = hex("A0 A1 00 01 10 10 0D 0A");
const Bytes kRateAnswer = hex("A0 A1 00 02 83 10 93 0D 0A A0 A1 00 02 86 01 87 0D 0A");

TEST(Receiver, AnswersAsItStandsAtFirst) {
  const Bytes revision =
      hex("A0 A1 00 02 83 02 81 0D 0A "
          "A0 A1 00 0E 80 01 00 01 00 0C 00 01 02 00 00 18 03 0F 9B 0D 0A");
  const Bytes extension =
      hex("A0 A1 00 02 83 64 E7 0D 0A "
          "A0 A1 00 22 64 FE 4F 52 42 2D 53 49 4D 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
          "00 00 00 00 00 00 00 00 00 00 00 BF 0D 0A");
  const Bytes unknown = hex("A0 A1 00 02 03 00 03 0D 0A");
  const Bytes unknownRefused = hex("A0 A1 00 02 84 03 87 0D 0A");
  const struct {
    const char* what;
    Bytes sent;
    Bytes answer;
  } kRows[] = {
      {"revision", kRevisionQuery, revision},
      {"revision, other type", hex("A0 A1 00 02 02 00 02 0D 0A"), revision},
      {"extension", kExtensionQuery, extension},
      {"unknown", unknown, unknownRefused},
      {"unknown sub-id", hex("A0 A1 00 02 64 01 65 0D 0A"), hex("A0 A1 00 02 84 64 E0 0D 0A")},
      {"no sub-id", hex("A0 A1 00 01 64 64 0D 0A"), hex("A0 A1 00 02 84 64 E0 0D 0A")},
      {"highest id", hex("A0 A1 00 02 FF FF 00 0D 0A"), hex("A0 A1 00 02 84 FF 7B 0D 0A")},
      {"a reply", hex("A0 A1 00 02 83 02 81 0D 0A"), hex("A0 A1 00 02 84 83 07 0D 0A")},
      {"query too long", hex("A0 A1 00 02 10 00 10 0D 0A"), hex("A0 A1 00 02 84 10 94 0D 0A")},
      {"query too short", hex("A0 A1 00 01 02 02 0D 0A"), hex("A0 A1 00 02 84 02 86 0D 0A")},
      {"restart too short", hex("A0 A1 00 02 64 3F 5B 0D 0A"), hex("A0 A1 00 02 84 64 E0 0D 0A")},
      {"damaged", hex("A0 A1 00 02 02 01 04 0D 0A") + kRateQuery, kRateAnswer},
      {"back to back", unknown + kRateQuery, unknownRefused + kRateAnswer},
  };
  for (const auto& row : kRows) {
    sim::Receiver receiver;
    EXPECT_EQ(receiver.receive(row.sent), row.answer) << row.what;
    EXPECT_EQ(receiver.state().restarts, 0U) << row.what;
  }
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
  EXPECT_EQ(receiver.receive(kExtensionQuery),
            hex("A0 A1 00 02 83 64 E7 0D 0A A0 A1 00 22 64 FE") + Bytes(32, 'x') + hex("9A 0D 0A"));
}

TEST(Receiver, GivesUpAFrameThatStaysIncompleteAndAnswersWhatItHadSwallowed) {
  sim::Receiver receiver;
  EXPECT_EQ(receiver.receive(hex("A0 A1 01 00") + kRateQuery), Bytes{});
  EXPECT_EQ(receiver.untilNextOutput(), milliseconds(1000));
  EXPECT_EQ(receiver.tick(milliseconds(999)), Bytes{});
  EXPECT_EQ(receiver.untilNextOutput(), milliseconds(1));
  EXPECT_EQ(receiver.tick(milliseconds(1)), kRateAnswer);
  EXPECT_EQ(receiver.receive(kRateQuery), kRateAnswer);
  EXPECT_EQ(receiver.readerCounts().frames, 2U);
}

TEST(Receiver, CountsItsStartsAndKeepsTheLastBody) {
  sim::Receiver receiver;
  EXPECT_EQ(
      receiver.receive(hex("A0 A1 00 0F 01 01 07 BC 01 06 00 00 0A 0E A3 31 00 00 00 2A 0D 0A")),
      hex("A0 A1 00 02 83 01 82 0D 0A"));
  EXPECT_EQ(receiver.state().softResets, 1U);
  EXPECT_EQ(receiver.state().lastSoftReset, hex("01 07 BC 01 06 00 00 0A 0E A3 31 00 00 00"));
  EXPECT_EQ(receiver.receive(hex("A0 A1 00 03 64 3F 01 5A 0D 0A")),
            hex("A0 A1 00 02 83 64 E7 0D 0A"));
  EXPECT_EQ(receiver.state().restarts, 1U);
  EXPECT_EQ(receiver.state().lastRestart, hex("01"));
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

TEST(Receiver, DoesNotSurveyInOtherTimingModes) {
  sim::Receiver receiver;
  receiver.tick(seconds(5000));
  EXPECT_EQ(receiver.state().surveyed, milliseconds(0));
  EXPECT_EQ(receiver.state().runningTimingMode(), sim::TimingMode::Dynamic);
}

TEST(Receiver, StillAnswersAfterBodiesOfAnyLength) {
  constexpr std::uint16_t kIds[] = {0x0100, 0x0400, 0x2A00, 0x5400, 0x6201, 0x6402, 0x643F, 0x7000};
  constexpr std::size_t kLongestBody = 40;
  sim::Receiver receiver;
  for (const std::uint16_t id : kIds) {
    for (std::size_t length = 0; length <= kLongestBody; ++length) {
      receiver.receive(sim::frame(id, Bytes(length, 0xFF)));
    }
  }
  receiver.change([](sim::State& state) { state.updateRate = 1; });
  EXPECT_EQ(receiver.receive(kRateQuery), kRateAnswer);
}

}  // namespace
}  // namespace orb::test
