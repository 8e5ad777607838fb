#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "support/operation_matrix.h"

namespace {

using orb::test::bytes;
using orb::test::kNoDevice;
using orb::test::kTimedOut;
using orb::test::Observed;
using orb::test::OperationTest;
using orb::test::Outcome;
using orb::test::Query;
using orb::test::QueryOutcome;
using orb::test::RowName;
using orb::test::Sent;
using orb::test::Setting;
using orb::test::SettingOutcome;

constexpr const char* kDescription =
    "64 02: Configure extended NMEA message interval of GNSS Receiver ";

const Sent kInterval5{"A0 A1 00 0F 64 02 05 05 05 05 05 05 05 00 00 00 00 00 00 63 0D 0A",
                      kDescription};
const Sent kInterval0{"A0 A1 00 0F 64 02 00 00 00 00 00 00 00 00 00 00 00 00 00 66 0D 0A",
                      kDescription};
const Sent kQueryInterval{"A0 A1 00 02 64 03 67 0D 0A",
                          "64 03: Query extended NMEA message interval of GNSS receiver "};

constexpr const char* kReply5 = "A0 A1 00 0E 64 81 05 01 02 03 04 06 07 08 09 0A 0B 0C E9 0D 0A";
constexpr const char* kReply6 = "A0 A1 00 0E 64 81 06 05 05 05 05 05 05 05 05 05 05 05 E6 0D 0A";

Outcome getInterval(orbController_QN4470T01& driver) {
  unsigned int interval = 0xABCD1234;
  const unsigned int result = driver.gpsObtGetNmeaExtendedConfigure(interval);
  return Outcome(result, interval);
}

std::vector<Query> queries() {
  return {{.name = "GetNmeaExtendedConfigure",
           .call = getInterval,
           .sends = kQueryInterval,
           .reply = kReply5,
           .answer = {0, "5"},
           .shortReply = "A0 A1 00 02 64 81 E5 0D 0A",
           .shortAnswer = {0, "0"},
           .untouched = "2882343476"}};
}

INSTANTIATE_TEST_SUITE_P(ExtendedNmea, QueryOutcome, testing::ValuesIn(queries()), RowName());

std::vector<Setting> settings() {
  return {
      {.name = "NmeaExtendedConfigure",
       .call = [](auto& driver) { return Outcome(driver.gpsObtNmeaExtendedConfigure(5)); },
       .sends = kInterval5,
       .reads = kQueryInterval,
       .reply = kReply5,
       .otherReply = kReply6,
       .shortReply = "A0 A1 00 02 64 81 E5 0D 0A"},
      // An unanswered read-back leaves 0.
      {.name = "NmeaExtendedConfigureToZero",
       .call = [](auto& driver) { return Outcome(driver.gpsObtNmeaExtendedConfigure(0)); },
       .sends = kInterval0,
       .reads = kQueryInterval,
       .reply = "A0 A1 00 0E 64 81 00 01 01 01 01 01 01 01 01 01 01 01 E4 0D 0A",
       .otherReply = kReply6,
       .shortReply = "A0 A1 00 02 64 81 E5 0D 0A",
       .shortAnswer = {0},
       .noReply = {4}},
      {.name = "NmeaPollingPartial",
       .call = [](auto& driver) { return Outcome(driver.configurNmeaPollingPartial(5)); },
       .sends = kInterval5,
       .reads = kQueryInterval,
       .reply = kReply5,
       .otherReply = kReply6,
       .shortReply = "A0 A1 00 02 64 81 E5 0D 0A"},
  };
}

INSTANTIATE_TEST_SUITE_P(ExtendedNmea, SettingOutcome, testing::ValuesIn(settings()), RowName());

class ExtendedNmea : public OperationTest {
 protected:
  /// What configureNmeaPolling() comes to. Its result never tells.
  Observed poll() {
    return observe([](auto& driver) { return Outcome(driver.configureNmeaPolling(5)); });
  }

  const std::string exchange_ = kInterval5.packet + " " + kQueryInterval.packet;
};

TEST_F(ExtendedNmea, IntervalIsTheFirstOfTheReply) {
  for (const auto& [reply, interval] :
       {std::pair{"A0 A1 00 0E 64 81 00 01 01 01 01 01 01 01 01 01 01 01 E4 0D 0A", "0"},
        {"A0 A1 00 0E 64 81 7F 00 00 00 00 00 00 00 00 00 00 00 9A 0D 0A", "127"},
        {"A0 A1 00 0E 64 81 80 00 00 00 00 00 00 00 00 00 00 00 65 0D 0A", "128"},
        {"A0 A1 00 0E 64 81 FF 00 00 00 00 00 00 00 00 00 00 00 1A 0D 0A", "255"},
        {"A0 A1 00 04 64 81 09 08 E4 0D 0A", "9"}}) {
    onPacket(kQueryInterval.packet).answer(bytes(reply));
    EXPECT_EQ(observe(getInterval),
              (Observed{.outputs = interval, .line = {"open", kQueryInterval.packet}}));
  }
}

TEST_F(ExtendedNmea, IntervalIsSetForEverySentence) {
  connectReceiver();
  EXPECT_EQ(
      observe([](auto& driver) { return Outcome(driver.gpsObtNmeaExtendedConfigure(255)); }),
      (Observed{
          .line = {"open", "A0 A1 00 0F 64 02 FF FF FF FF FF FF FF 00 00 00 00 00 00 99 0D 0A " +
                               kQueryInterval.packet}}));
  EXPECT_EQ(gps_.receiver.state().nmeaIntervals,
            (std::array<std::uint8_t, 12>{255, 255, 255, 255, 255, 255, 255}));
}

// The low byte is sent, and the whole interval compared with what is read back.
TEST_F(ExtendedNmea, IntervalAbove255IsSentAndThenRejected) {
  connectReceiver();
  for (const auto& [interval, packet] :
       {std::pair{256U, "A0 A1 00 0F 64 02 00 00 00 00 00 00 00 00 00 00 00 00 00 66 0D 0A"},
        {300U, "A0 A1 00 0F 64 02 2C 2C 2C 2C 2C 2C 2C 00 00 00 00 00 00 4A 0D 0A"},
        {0xFFFFFFFFU, "A0 A1 00 0F 64 02 FF FF FF FF FF FF FF 00 00 00 00 00 00 99 0D 0A"}}) {
    EXPECT_EQ(observe([interval = interval](auto& driver) {
                return Outcome(driver.gpsObtNmeaExtendedConfigure(interval));
              }),
              (Observed{.result = 1, .line = {"open", packet + (" " + kQueryInterval.packet)}}));
    EXPECT_EQ(gps_.receiver.state().nmeaIntervals[6], interval & 0xFF);
  }
}

TEST_F(ExtendedNmea, PollingIsSetInTheReceiver) {
  connectReceiver();
  EXPECT_EQ(poll(), (Observed{.line = {"open", exchange_}}));
  EXPECT_EQ(gps_.receiver.state().nmeaIntervals[0], 5);
}

TEST_F(ExtendedNmea, PollingHidesAnIntervalThatIsNotKept) {
  onPacket(kQueryInterval.packet).answer(bytes(kReply6));
  EXPECT_EQ(poll(), (Observed{.line = {"open", exchange_}}));
}

TEST_F(ExtendedNmea, PollingHidesThatNoReplyComes) {
  letWaitsEnd();
  EXPECT_EQ(poll(),
            (Observed{.standardError = kTimedOut,
                      .errorLog = "STAMP:  Did not receive : " + kQueryInterval.description + "\n",
                      .line = {"open", exchange_}}));
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_F(ExtendedNmea, PollingHidesThatTheDeviceIsMissing) {
  unplug();
  EXPECT_EQ(
      poll(),
      (Observed{.standardError = std::string(kNoDevice) + kNoDevice,
                .errorLog = "STAMP:  Could not send : " + kInterval5.description +
                            "\nSTAMP:  Could not send : " + kQueryInterval.description + "\n"}));
}

}  // namespace
