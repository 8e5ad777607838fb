#include <gtest/gtest.h>

#include <vector>

#include "support/operation_matrix.h"

namespace {

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

std::vector<Query> queries() {
  return {
      {.name = "GetPowerMode",
       .call =
           [](auto& driver) {
             unsigned int mode = 77;
             return Outcome(driver.gpsObtGetPowerMode(mode), mode);
           },
       .sends = kQueryPowerMode,
       .reply = "A0 A1 00 02 B9 01 B8 0D 0A",
       .answer = {0, "1"},
       .shortReply = "A0 A1 00 01 B9 B9 0D 0A",
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
       .reply = "A0 A1 00 02 B9 01 B8 0D 0A",
       .answer = {0, "\"POWERSAVE\""},
       .shortReply = "A0 A1 00 01 B9 B9 0D 0A",
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
  };
}

INSTANTIATE_TEST_SUITE_P(OutputAndPower, QueryOutcome, testing::ValuesIn(queries()), RowName());

std::vector<Setting> settings() {
  return {
      {.name = "SetPowerMode",
       .call = [](auto& driver) { return Outcome(driver.gpsObtSetPowerMode("POWERSAVE")); },
       .sends = {"A0 A1 00 03 0C 01 00 0D 0D 0A", "0C 00: Set system power mode"},
       .reads = kQueryPowerMode,
       .reply = "A0 A1 00 02 B9 01 B8 0D 0A",
       .otherReply = "A0 A1 00 02 B9 00 B9 0D 0A",
       .shortReply = "A0 A1 00 01 B9 B9 0D 0A"},
      {.name = "SetCfgRate",
       .call = [](auto& driver) { return Outcome(driver.gpsObtSetCfgRate(20)); },
       .sends = {"A0 A1 00 03 0E 14 00 1A 0D 0A",
                 "0E 00: Configure the position update rate of GNSS system"},
       .settle = 800ms,
       .reads = kQueryRate,
       .reply = "A0 A1 00 02 86 14 92 0D 0A",
       .printed = "nUpdateRate: 20\napplyUpdateRate:20 nUpdateRate:20\n",
       .otherReply = "A0 A1 00 02 86 01 87 0D 0A",
       .other = {1, "", "nUpdateRate: 1\napplyUpdateRate:20 nUpdateRate:1\n"},
       .shortReply = "A0 A1 00 01 86 86 0D 0A",
       .shortAnswer = {1, "", "nUpdateRate: 0\napplyUpdateRate:20 nUpdateRate:0\n"},
       .noReply = {5, "", "applyUpdateRate:20 nUpdateRate:0\n"}},
  };
}

INSTANTIATE_TEST_SUITE_P(OutputAndPower, SettingOutcome, testing::ValuesIn(settings()), RowName());

std::vector<Order> orders() {
  return {
      {.name = "NavMsgConfigure",
       .call = [](auto& driver) { return Outcome(driver.gpsObtNavMsgConfigure(5)); },
       .sends = {"A0 A1 00 04 64 2F 05 00 4E 0D 0A",
                 "64 2F: Configure the navigation output message interval of GNSS receiver "}},
  };
}

INSTANTIATE_TEST_SUITE_P(OutputAndPower, OrderOutcome, testing::ValuesIn(orders()), RowName());

}  // namespace
