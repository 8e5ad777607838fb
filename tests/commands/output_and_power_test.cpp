#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "orb-sim/frame.h"
#include "support/operation_matrix.h"

namespace {

using orb::test::bytes;
using orb::test::kNoDevice;
using orb::test::Observed;
using orb::test::OperationTest;
using orb::test::Order;
using orb::test::OrderOutcome;
using orb::test::Outcome;
using orb::test::Query;
using orb::test::QueryOutcome;
using orb::test::RowName;
using orb::test::Sent;
using orb::test::Setting;
using orb::test::SettingOutcome;
using namespace std::chrono_literals;

const Sent kQueryPowerMode{"A0 A1 00 01 15 15 0D 0A",
                           "15 00: Query the power mode status of GNSS receiver "};
const Sent kQueryRate{"A0 A1 00 01 10 10 0D 0A",
                      "10 00: Query the position update rate of GNSS system "};
const Sent kQueryInterval{"A0 A1 00 02 64 30 54 0D 0A",
                          "64 30: Query the navigation output message interval of GNSS receiver "};
const Sent kSetTwenty{"A0 A1 00 03 0E 14 00 1A 0D 0A",
                      "0E 00: Configure the position update rate of GNSS system"};
const Sent kSetSaving{"A0 A1 00 03 0C 01 00 0D 0D 0A", "0C 00: Set system power mode"};
const Sent kSetNormal{"A0 A1 00 03 0C 00 00 0C 0D 0A", "0C 00: Set system power mode"};

constexpr const char* kReportsNormal = "A0 A1 00 02 B9 00 B9 0D 0A";
constexpr const char* kReportsSaving = "A0 A1 00 02 B9 01 B8 0D 0A";
constexpr const char* kReportsNothing = "A0 A1 00 01 B9 B9 0D 0A";

// Queries, and the output type: it is the one setting whose acknowledgement is awaited.

Query selectingOutputType(const std::string& name, const std::string& type,
                          const std::string& packet) {
  return {.name = name,
          .call = [type](auto& driver) { return Outcome(driver.gpsObtSetMsgType(type)); },
          .sends = {packet, "09 00: Configure and select the output message type "},
          .reply = "A0 A1 00 02 83 09 8A 0D 0A",
          .answer = {0},
          .shortReply = "A0 A1 00 01 83 83 0D 0A",
          .shortAnswer = {0}};
}

std::vector<Query> queries() {
  return {
      {.name = "GetPowerMode",
       .call =
           [](auto& driver) {
             unsigned int mode = 77;
             return Outcome(driver.gpsObtGetPowerMode(mode), mode);
           },
       .sends = kQueryPowerMode,
       .reply = kReportsSaving,
       .answer = {0, "1"},
       .shortReply = kReportsNothing,
       .shortAnswer = {0, "0"},
       .untouched = "77"},
      // A failed query leaves the normal mode, not what the text held.
      {.name = "GetRxMode",
       .call =
           [](auto& driver) {
             std::string mode = "before";
             return Outcome(driver.getRxMode(mode), mode);
           },
       .sends = kQueryPowerMode,
       .reply = kReportsSaving,
       .answer = {0, "\"POWERSAVE\""},
       .shortReply = kReportsNothing,
       .shortAnswer = {0, "\"NORMAL\""},
       .untouched = "\"NORMAL\""},
      {.name = "GetCfgRate",
       .call =
           [](auto& driver) {
             unsigned char rate = 77;
             return Outcome(driver.gpsOrbGetCfgRate(rate), rate);
           },
       .sends = kQueryRate,
       .reply = "A0 A1 00 02 86 14 92 0D 0A",
       .answer = {0, "20", "nUpdateRate: 20\n"},
       .shortReply = "A0 A1 00 01 86 86 0D 0A",
       .shortAnswer = {0, "0", "nUpdateRate: 0\n"},
       .untouched = "77"},
      {.name = "GetNavMsg",
       .call =
           [](auto& driver) {
             unsigned char interval = 77;
             return Outcome(driver.gpsObtGetNavMsg(interval), interval);
           },
       .sends = kQueryInterval,
       .reply = "A0 A1 00 03 64 98 05 F9 0D 0A",
       .answer = {0, "5"},
       .shortReply = "A0 A1 00 02 64 98 FC 0D 0A",
       .shortAnswer = {0, "0"},
       .untouched = "77"},
      // It configures nothing.
      {.name = "ConfigureOrbPolling",
       .call = [](auto& driver) { return Outcome(driver.configureOrbPolling(5)); },
       .sends = kQueryInterval,
       .reply = "A0 A1 00 03 64 98 01 FD 0D 0A",
       .answer = {0},
       .shortReply = "A0 A1 00 02 64 98 FC 0D 0A",
       .shortAnswer = {0}},
      selectingOutputType("SetMsgTypeToNo", "NO", "A0 A1 00 03 09 00 00 09 0D 0A"),
      selectingOutputType("SetMsgTypeToNmea", "NMEA", "A0 A1 00 03 09 01 00 08 0D 0A"),
      selectingOutputType("SetMsgTypeToBinary", "BINARY", "A0 A1 00 03 09 02 00 0B 0D 0A"),
      selectingOutputType("SetMsgTypeToSomethingElse", "nmea", "A0 A1 00 03 09 00 00 09 0D 0A"),
  };
}

INSTANTIATE_TEST_SUITE_P(OutputAndPower, QueryOutcome, testing::ValuesIn(queries()), RowName());

// Settings. What an unanswered read-back leaves is 0, so it confirms a setting of 0.

Setting savingPower(const std::string& name, orb::test::Call call) {
  return {.name = name,
          .call = std::move(call),
          .sends = kSetSaving,
          .reads = kQueryPowerMode,
          .reply = kReportsSaving,
          .otherReply = kReportsNormal,
          .shortReply = kReportsNothing};
}

Setting normalPower(const std::string& name, orb::test::Call call) {
  return {.name = name,
          .call = std::move(call),
          .sends = kSetNormal,
          .reads = kQueryPowerMode,
          .reply = kReportsNormal,
          .otherReply = kReportsSaving,
          .shortReply = kReportsNothing,
          .shortAnswer = {0},
          .noReply = {4}};
}

std::vector<Setting> settings() {
  return {
      savingPower("SetPowerModeToPowerSave",
                  [](auto& driver) { return Outcome(driver.gpsObtSetPowerMode("POWERSAVE")); }),
      normalPower("SetPowerModeToNormal",
                  [](auto& driver) { return Outcome(driver.gpsObtSetPowerMode("NORMAL")); }),
      normalPower("SetPowerModeToSomethingElse",
                  [](auto& driver) { return Outcome(driver.gpsObtSetPowerMode("powersave")); }),
      savingPower("SetRxModeToPowerSave",
                  [](auto& driver) { return Outcome(driver.setRxMode("POWERSAVE")); }),
      normalPower("SetRxModeToNormal",
                  [](auto& driver) { return Outcome(driver.setRxMode("NORMAL")); }),
      {.name = "SetCfgRateToTwenty",
       .call = [](auto& driver) { return Outcome(driver.gpsObtSetCfgRate(20)); },
       .sends = kSetTwenty,
       .settle = 800ms,
       .reads = kQueryRate,
       .reply = "A0 A1 00 02 86 14 92 0D 0A",
       .printed = "nUpdateRate: 20\napplyUpdateRate:20 nUpdateRate:20\n",
       .otherReply = "A0 A1 00 02 86 01 87 0D 0A",
       .other = {1, "", "nUpdateRate: 1\napplyUpdateRate:20 nUpdateRate:1\n"},
       .shortReply = "A0 A1 00 01 86 86 0D 0A",
       .shortAnswer = {1, "", "nUpdateRate: 0\napplyUpdateRate:20 nUpdateRate:0\n"},
       .noReply = {5, "", "applyUpdateRate:20 nUpdateRate:0\n"}},
      {.name = "SetCfgRateToZero",
       .call = [](auto& driver) { return Outcome(driver.gpsObtSetCfgRate(0)); },
       .sends = {"A0 A1 00 03 0E 00 00 0E 0D 0A",
                 "0E 00: Configure the position update rate of GNSS system"},
       .settle = 800ms,
       .reads = kQueryRate,
       .reply = "A0 A1 00 02 86 00 86 0D 0A",
       .printed = "nUpdateRate: 0\napplyUpdateRate:0 nUpdateRate:0\n",
       .otherReply = "A0 A1 00 02 86 FF 79 0D 0A",
       .other = {1, "", "nUpdateRate: 255\napplyUpdateRate:0 nUpdateRate:255\n"},
       .shortReply = "A0 A1 00 01 86 86 0D 0A",
       .shortAnswer = {0, "", "nUpdateRate: 0\napplyUpdateRate:0 nUpdateRate:0\n"},
       .noReply = {4, "", "applyUpdateRate:0 nUpdateRate:0\n"}},
      {.name = "SetCfgRateToTheHighestByte",
       .call = [](auto& driver) { return Outcome(driver.gpsObtSetCfgRate(255)); },
       .sends = {"A0 A1 00 03 0E FF 00 F1 0D 0A",
                 "0E 00: Configure the position update rate of GNSS system"},
       .settle = 800ms,
       .reads = kQueryRate,
       .reply = "A0 A1 00 02 86 FF 79 0D 0A",
       .printed = "nUpdateRate: 255\napplyUpdateRate:255 nUpdateRate:255\n",
       .otherReply = "A0 A1 00 02 86 FE 78 0D 0A",
       .other = {1, "", "nUpdateRate: 254\napplyUpdateRate:255 nUpdateRate:254\n"},
       .shortReply = "A0 A1 00 01 86 86 0D 0A",
       .shortAnswer = {1, "", "nUpdateRate: 0\napplyUpdateRate:255 nUpdateRate:0\n"},
       .noReply = {5, "", "applyUpdateRate:255 nUpdateRate:0\n"}},
  };
}

INSTANTIATE_TEST_SUITE_P(OutputAndPower, SettingOutcome, testing::ValuesIn(settings()), RowName());

Order settingInterval(const std::string& name, unsigned char interval, const std::string& packet) {
  return {
      .name = name,
      .call = [interval](auto& driver) { return Outcome(driver.gpsObtNavMsgConfigure(interval)); },
      .sends = {packet,
                "64 2F: Configure the navigation output message interval of GNSS receiver "}};
}

std::vector<Order> orders() {
  return {
      settingInterval("NavMsgConfigureToFive", 5, "A0 A1 00 04 64 2F 05 00 4E 0D 0A"),
      settingInterval("NavMsgConfigureToZero", 0, "A0 A1 00 04 64 2F 00 00 4B 0D 0A"),
      settingInterval("NavMsgConfigureToTheHighestByte", 255, "A0 A1 00 04 64 2F FF 00 B4 0D 0A"),
  };
}

INSTANTIATE_TEST_SUITE_P(OutputAndPower, OrderOutcome, testing::ValuesIn(orders()), RowName());

class OutputAndPower : public OperationTest {
 protected:
  /// What a query makes of a reply of message `id` with this body.
  Observed answered(const Sent& query, std::uint16_t id, const std::string& body,
                    const orb::test::Call& call) {
    onPacket(query.packet).answer(orb::sim::frame(id, bytes(body)));
    return observe(call);
  }

  Observed rxModeFrom(const std::string& powerMode) {
    return answered(kQueryPowerMode, 0xB900, powerMode, [](auto& driver) {
      std::string mode = "before";
      return Outcome(driver.getRxMode(mode), mode);
    });
  }
};

const std::map<std::string, std::string> kBytes = {{"00", "0"},   {"01", "1"},   {"02", "2"},
                                                   {"7F", "127"}, {"80", "128"}, {"FF", "255"}};

TEST_F(OutputAndPower, PowerModeIsReadAsAnUnsignedByte) {
  for (const auto& [byte, value] : kBytes) {
    EXPECT_EQ(answered(kQueryPowerMode, 0xB900, byte,
                       [](auto& driver) {
                         unsigned int mode = 0xFFFFFF77;
                         return Outcome(driver.gpsObtGetPowerMode(mode), mode);
                       }),
              (Observed{.outputs = value, .line = {"open", kQueryPowerMode.packet}}));
  }
}

TEST_F(OutputAndPower, RateIsReadAsAnUnsignedByteAndPrinted) {
  for (const auto& [byte, value] : kBytes) {
    EXPECT_EQ(answered(kQueryRate, 0x8600, byte,
                       [](auto& driver) {
                         unsigned char rate = 77;
                         return Outcome(driver.gpsOrbGetCfgRate(rate), rate);
                       }),
              (Observed{.outputs = value,
                        .standardOutput = "nUpdateRate: " + value + "\n",
                        .line = {"open", kQueryRate.packet}}));
  }
}

TEST_F(OutputAndPower, NavigationIntervalIsReadAsAnUnsignedByte) {
  for (const auto& [byte, value] : kBytes) {
    EXPECT_EQ(answered(kQueryInterval, 0x6498, byte,
                       [](auto& driver) {
                         unsigned char interval = 77;
                         return Outcome(driver.gpsObtGetNavMsg(interval), interval);
                       }),
              (Observed{.outputs = value, .line = {"open", kQueryInterval.packet}}));
  }
}

TEST_F(OutputAndPower, RxModeNamesThePowerModes) {
  EXPECT_EQ(rxModeFrom("00").outputs, "\"NORMAL\"");
  EXPECT_EQ(rxModeFrom("01").outputs, "\"POWERSAVE\"");
}

TEST_F(OutputAndPower, RxModeHasNoNameForAnyOtherPowerMode) {
  for (const char* mode : {"02", "7F", "80", "FF"}) {
    EXPECT_EQ(rxModeFrom(mode),
              (Observed{.outputs = "\"\"", .line = {"open", kQueryPowerMode.packet}}));
  }
}

TEST_F(OutputAndPower, RxModeIsRefusedUnlessNamedExactly) {
  letWaitsEnd();  // of what is sent by mistake
  for (const char* mode : {"powersave", "normal", "PowerSave", "", "NORMAL ", " NORMAL", "NORMA",
                           "POWERSAVE1", "0", "1"}) {
    EXPECT_EQ(observe([&](auto& driver) { return Outcome(driver.setRxMode(mode)); }),
              Observed{.result = 1})
        << mode;
  }
}

TEST_F(OutputAndPower, PowerModeIsNormalForAnyTextButOne) {
  onPacket(kQueryPowerMode.packet).answer(bytes(kReportsNormal));
  for (const char* mode : {"", "normal", "powersave", "POWERSAVE ", "1"}) {
    EXPECT_EQ(observe([&](auto& driver) { return Outcome(driver.gpsObtSetPowerMode(mode)); }),
              (Observed{.line = {"open", kSetNormal.packet + " " + kQueryPowerMode.packet}}))
        << mode;
  }
}

TEST_F(OutputAndPower, PowerModeReadBackMayBeNeitherOfTheTwo) {
  onPacket(kQueryPowerMode.packet).answer(bytes("A0 A1 00 02 B9 02 BB 0D 0A"));
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.setRxMode("NORMAL")); }).result, 1u);
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.setRxMode("POWERSAVE")); }).result,
            1u);
}

TEST_F(OutputAndPower, OutputTypeIsNoneForAnyTextButTwo) {
  gps_.script.on(0x0900).answer(bytes("A0 A1 00 02 83 09 8A 0D 0A"));
  for (const char* type : {"", "no", "nmea", "binary", "NMEA ", "BINAR", "1", "2"}) {
    EXPECT_EQ(observe([&](auto& driver) { return Outcome(driver.gpsObtSetMsgType(type)); }),
              (Observed{.line = {"open", "A0 A1 00 03 09 00 00 09 0D 0A"}}))
        << type;
  }
}

TEST_F(OutputAndPower, OutputTypeTakesTheAcknowledgementOfAnyMessage) {
  gps_.script.on(0x0900).answer(bytes("A0 A1 00 02 83 0C 8F 0D 0A"));
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.gpsObtSetMsgType("NMEA")); }),
            (Observed{.line = {"open", "A0 A1 00 03 09 01 00 08 0D 0A"}}));
}

TEST_F(OutputAndPower, PollingSendsTheQueryAloneForAnyValue) {
  constexpr unsigned char kValues[] = {0, 1, 5, 255};
  onPacket(kQueryInterval.packet).answer(bytes("A0 A1 00 03 64 98 01 FD 0D 0A"));
  for (const unsigned char value : kValues) {
    EXPECT_EQ(observe([&](auto& driver) { return Outcome(driver.configureOrbPolling(value)); }),
              (Observed{.line = {"open", kQueryInterval.packet}}));
  }
}

// The read-back of a setting that could not be sent.

TEST_F(OutputAndPower, RateIsReadBackAlsoWhenItCouldNotBeSent) {
  onPacket(kQueryRate.packet).answer(bytes("A0 A1 00 02 86 01 87 0D 0A"));
  unplug();
  when("wait 800 ms", 1, [&] { plugIn(); });
  const auto setToOne = [](auto& driver) { return Outcome(driver.gpsObtSetCfgRate(1)); };
  Observed expected{.result = 8,
                    .standardOutput = "nUpdateRate: 1\napplyUpdateRate:1 nUpdateRate:1\n",
                    .standardError = kNoDevice,
                    .errorLog = "STAMP:  Could not send : " + kSetTwenty.description + "\n",
                    .line = {"wait 800 ms", "open", kQueryRate.packet}};
  EXPECT_EQ(observe(setToOne), expected);

  const auto setToTwenty = [](auto& driver) { return Outcome(driver.gpsObtSetCfgRate(20)); };
  unplug();
  when("wait 800 ms", 1, [&] { plugIn(); });
  expected.result = 9;
  expected.standardOutput = "nUpdateRate: 1\napplyUpdateRate:20 nUpdateRate:1\n";
  EXPECT_EQ(observe(setToTwenty), expected);
}

/// Finds the device there when it notes that it was not.
struct ReturningDevice : orb::test::StampedDriver {
  explicit ReturningDevice(std::function<void()> deviceReturns)
      : plugIn(std::move(deviceReturns)) {}
  std::string timeStamp() override {
    plugIn();
    return StampedDriver::timeStamp();
  }
  std::function<void()> plugIn;
};

TEST_F(OutputAndPower, PowerModeIsReadBackAlsoWhenItCouldNotBeSent) {
  onPacket(kQueryPowerMode.packet).answer(bytes(kReportsNormal));
  ReturningDevice driver([&] { plugIn(); });
  Observed expected{.result = 8,
                    .standardError = kNoDevice,
                    .errorLog = "STAMP:  Could not send : " + kSetNormal.description + "\n",
                    .line = {"open", kQueryPowerMode.packet}};
  unplug();
  EXPECT_EQ(observe(driver, [](auto& d) { return Outcome(d.gpsObtSetPowerMode("NORMAL")); }),
            expected);
  unplug();
  expected.result = 9;
  EXPECT_EQ(observe(driver, [](auto& d) { return Outcome(d.gpsObtSetPowerMode("POWERSAVE")); }),
            expected);
}

TEST_F(OutputAndPower, RateReadBackFailsWhenTheDeviceGoesMeanwhile) {
  when("wait 800 ms", 1, [&] { unplug(); });
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.gpsObtSetCfgRate(20)); }),
            (Observed{.result = 9,
                      .standardOutput = "applyUpdateRate:20 nUpdateRate:0\n",
                      .standardError = kNoDevice,
                      .errorLog = "STAMP:  Could not send : " + kQueryRate.description + "\n",
                      .line = {"open", kSetTwenty.packet, "wait 800 ms"}}));
}

}  // namespace
