#include <array>

#include "operations/operation.h"

namespace orb::test {

namespace {

using namespace std::chrono_literals;

const Sent kQueryPowerMode{"A0 A1 00 01 15 15 0D 0A",
                           "15 00: Query the power mode status of GNSS receiver "};
const Sent kQueryRate{"A0 A1 00 01 10 10 0D 0A",
                      "10 00: Query the position update rate of GNSS system "};
const Sent kQueryInterval{"A0 A1 00 02 64 30 54 0D 0A",
                          "64 30: Query the navigation output message interval of GNSS receiver "};
const Sent kSetSaving{"A0 A1 00 03 0C 01 00 0D 0D 0A", "0C 00: Set system power mode"};
const Sent kSetNormal{"A0 A1 00 03 0C 00 00 0C 0D 0A", "0C 00: Set system power mode"};
constexpr const char* kSetInterval =
    "64 2F: Configure the navigation output message interval of GNSS receiver ";

constexpr const char* kReportsNormal = "A0 A1 00 02 B9 00 B9 0D 0A";
constexpr const char* kReportsSaving = "A0 A1 00 02 B9 01 B8 0D 0A";
constexpr const char* kReportsNothing = "A0 A1 00 01 B9 B9 0D 0A";

std::string powerModeName(unsigned int mode) {
  return mode == 0 ? "NORMAL" : mode == 1 ? "POWERSAVE" : "";
}

Drawn drawPowerMode(Numbers& numbers) {
  const std::uint8_t mode = numbers.between<std::uint8_t>(0, 1);
  return {calling(&Driver::gpsObtSetPowerMode, mode == 1 ? "POWERSAVE" : "normal"), 0,
          [=](auto& state) { state.powerMode = mode; }};
}

Drawn drawRxMode(Numbers& numbers) {
  const auto mode = numbers.between<std::uint8_t>(0, 2);
  return drawnInRange(mode <= 1, calling(&Driver::setRxMode, powerModeName(mode)),
                      [=](auto& state) { state.powerMode = mode; });
}

Drawn drawRate(Numbers& numbers) {
  const auto rate = numbers.between<std::uint8_t>(0, 20);
  return {calling(&Driver::gpsObtSetCfgRate, rate), 0,
          [=](auto& state) { state.updateRate = rate; }};
}

Drawn drawOutputType(Numbers& numbers) {
  constexpr std::array<const char*, 3> kTypes = {"NO", "NMEA", "BINARY"};
  const auto type = numbers.between<std::uint8_t>(0, 2);
  return {calling(&Driver::gpsObtSetMsgType, kTypes[type]), 0,
          [=](auto& state) { state.outputType = sim::OutputType{type}; }};
}

Drawn drawInterval(Numbers& numbers) {
  const std::uint8_t interval = numbers.byte();
  return {calling(&Driver::gpsObtNavMsgConfigure, interval), 0,
          [=](auto& state) { state.navMessageInterval = interval; }};
}

// Its acknowledgement is awaited, as of no other setting.
Query selectingOutputType(const std::string& name, const std::string& type,
                          const std::string& packet) {
  return {.name = name,
          .call = calling(&Driver::gpsObtSetMsgType, type),
          .sends = {packet, "09 00: Configure and select the output message type "},
          .reply = {"A0 A1 00 02 83 09 8A 0D 0A", {0}},
          .shortReply = {"A0 A1 00 01 83 83 0D 0A", {0}}};
}

std::string unsignedByte(const Payload& reply) { return text(reply.u8(1)); }

// reply, shortReply (it ends before its fields): a packet, and what it comes to: result, outputs,
// print. untouched: outputs after a failure. readings: bodies of further replies, outputs, prints.
std::vector<Query> queries() {
  Query toNmea = selectingOutputType("SetMsgTypeToNmea", "NMEA", "A0 A1 00 03 09 01 00 08 0D 0A");
  toNmea.draw = drawOutputType;
  return {
      {.name = "GetPowerMode",
       .call = reading(&Driver::gpsObtGetPowerMode, 0xFFFFFF77),
       .sends = kQueryPowerMode,
       .reply = {kReportsSaving, {0, "1"}},
       .shortReply = {kReportsNothing, {0, "0"}},
       .untouched = "4294967159",
       .readings = {{"00", "0"}, {"02", "2"}, {"7F", "127"}, {"80", "128"}, {"FF", "255"}},
       .decoded = unsignedByte,
       .inState = [](auto& state) { return text(state.powerMode); }},
      // A failed query leaves the normal mode, not what the text held.
      {.name = "GetRxMode",
       .call = reading(&Driver::getRxMode, "before"),
       .sends = kQueryPowerMode,
       .reply = {kReportsSaving, {0, "\"POWERSAVE\""}},
       .shortReply = {kReportsNothing, {0, "\"NORMAL\""}},
       .untouched = "\"NORMAL\"",
       .readings =
           {{"00", "\"NORMAL\""}, {"02", "\"\""}, {"7F", "\"\""}, {"80", "\"\""}, {"FF", "\"\""}},
       .decoded = [](auto& reply) { return text(powerModeName(reply.u8(1))); },
       .inState = [](auto& state) { return text(powerModeName(state.powerMode)); }},
      {.name = "GetCfgRate",
       .call = reading(&Driver::gpsOrbGetCfgRate, 77),
       .sends = kQueryRate,
       .reply = {"A0 A1 00 02 86 14 92 0D 0A", {0, "20", "nUpdateRate: 20\n"}},
       .shortReply = {"A0 A1 00 01 86 86 0D 0A", {0, "0", "nUpdateRate: 0\n"}},
       .untouched = "77",
       .readings = {{"00", "0", "nUpdateRate: 0\n"},
                    {"01", "1", "nUpdateRate: 1\n"},
                    {"7F", "127", "nUpdateRate: 127\n"},
                    {"80", "128", "nUpdateRate: 128\n"},
                    {"FF", "255", "nUpdateRate: 255\n"}},
       .decoded = unsignedByte,
       .inState = [](auto& state) { return text(state.updateRate); }},
      {.name = "GetNavMsg",
       .call = reading(&Driver::gpsObtGetNavMsg, 77),
       .sends = kQueryInterval,
       .reply = {"A0 A1 00 03 64 98 05 F9 0D 0A", {0, "5"}},
       .shortReply = {"A0 A1 00 02 64 98 FC 0D 0A", {0, "0"}},
       .untouched = "77",
       .readings = {{"00", "0"}, {"01", "1"}, {"7F", "127"}, {"80", "128"}, {"FF", "255"}},
       .decoded = [](auto& reply) { return text(reply.u8(2)); },
       .inState = [](auto& state) { return text(state.navMessageInterval); }},
      // It configures nothing.
      {.name = "ConfigureOrbPolling",
       .call = calling(&Driver::configureOrbPolling, 5),
       .sends = kQueryInterval,
       .reply = {"A0 A1 00 03 64 98 01 FD 0D 0A", {0}},
       .shortReply = {"A0 A1 00 02 64 98 FC 0D 0A", {0}}},
      toNmea,
      selectingOutputType("SetMsgTypeToNo", "NO", "A0 A1 00 03 09 00 00 09 0D 0A"),
      selectingOutputType("SetMsgTypeToBinary", "BINARY", "A0 A1 00 03 09 02 00 0B 0D 0A"),
      selectingOutputType("SetMsgTypeToSomethingElse", "nmea", "A0 A1 00 03 09 00 00 09 0D 0A"),
  };
}

// What an unanswered read-back leaves is the normal mode.
Setting settingPower(const std::string& name, const Call& call, bool saves) {
  return {.name = name,
          .call = call,
          .sends = saves ? kSetSaving : kSetNormal,
          .reads = kQueryPowerMode,
          .reply = {saves ? kReportsSaving : kReportsNormal},
          .otherReply = {saves ? kReportsNormal : kReportsSaving},
          .shortReply = {kReportsNothing, {saves ? 1U : 0U}},
          .noReply = {saves ? 5U : 4U},
          .mismatches = {"02"}};
}

std::string printsRate(const std::string& asked, const std::string& read) {
  return "nUpdateRate: " + read + "\napplyUpdateRate:" + asked + " nUpdateRate:" + read + "\n";
}

/// Of a rate, its packet, the reply with it, and a reply with another one.
Setting settingRate(const std::string& name, unsigned char rate, const std::string& packet,
                    const std::string& reply, const std::string& otherReply,
                    const std::string& otherRate) {
  const std::string asked = std::to_string(rate);
  const unsigned int mismatch = rate == 0 ? 0 : 1;  // of the 0 that is read from no rate
  return {.name = name,
          .call = calling(&Driver::gpsObtSetCfgRate, rate),
          .sends = {packet, "0E 00: Configure the position update rate of GNSS system"},
          .settle = 800ms,
          .reads = kQueryRate,
          .reply = {reply, {0, "", printsRate(asked, asked)}},
          .otherReply = {otherReply, {1, "", printsRate(asked, otherRate)}},
          .shortReply = {"A0 A1 00 01 86 86 0D 0A", {mismatch, "", printsRate(asked, "0")}},
          .noReply = {4 | mismatch, "", "applyUpdateRate:" + asked + " nUpdateRate:0\n"}};
}

// reply has the value that call sets, otherReply and mismatches another one, shortReply ends before
// it: a packet, and what it comes to: result (0 for reply, otherwise 1 by default), outputs, print.
// values: further calls, packets, and what they come to.
// What an unanswered read-back leaves is 0, so it confirms a setting of 0.
std::vector<Setting> settings() {
  Setting powerMode =
      settingPower("SetPowerModeToNormal", calling(&Driver::gpsObtSetPowerMode, "NORMAL"), false);
  powerMode.draw = drawPowerMode;
  for (const char* other : {"", "normal", "powersave", "POWERSAVE ", "1"}) {
    powerMode.values.push_back({calling(&Driver::gpsObtSetPowerMode, other), kSetNormal.packet});
  }
  Setting rxMode = settingPower("SetRxModeToNormal", calling(&Driver::setRxMode, "NORMAL"), false);
  rxMode.draw = drawRxMode;
  for (const char* wrong : {"powersave", "normal", "PowerSave", "", "NORMAL ", " NORMAL", "NORMA",
                            "POWERSAVE1", "0", "1"}) {
    rxMode.rejected.push_back(calling(&Driver::setRxMode, wrong));
  }
  Setting twenty = settingRate("SetCfgRateToTwenty", 20, "A0 A1 00 03 0E 14 00 1A 0D 0A",
                               "A0 A1 00 02 86 14 92 0D 0A", "A0 A1 00 02 86 01 87 0D 0A", "1");
  twenty.draw = drawRate;
  return {
      powerMode,
      settingPower("SetPowerModeToSomethingElse", calling(&Driver::gpsObtSetPowerMode, "powersave"),
                   false),
      settingPower("SetPowerModeToPowerSave", calling(&Driver::gpsObtSetPowerMode, "POWERSAVE"),
                   true),
      rxMode,
      settingPower("SetRxModeToPowerSave", calling(&Driver::setRxMode, "POWERSAVE"), true),
      twenty,
      settingRate("SetCfgRateToZero", 0, "A0 A1 00 03 0E 00 00 0E 0D 0A",
                  "A0 A1 00 02 86 00 86 0D 0A", "A0 A1 00 02 86 FF 79 0D 0A", "255"),
      settingRate("SetCfgRateToTheHighestByte", 255, "A0 A1 00 03 0E FF 00 F1 0D 0A",
                  "A0 A1 00 02 86 FF 79 0D 0A", "A0 A1 00 02 86 FE 78 0D 0A", "254"),
  };
}

// A name, the call, and what it sends.
std::vector<Order> orders() {
  const auto interval = [](unsigned char value) {
    return calling(&Driver::gpsObtNavMsgConfigure, value);
  };
  return {
      {"NavMsgConfigureToFive",
       interval(5),
       {"A0 A1 00 04 64 2F 05 00 4E 0D 0A", kSetInterval},
       drawInterval},
      {"NavMsgConfigureToZero", interval(0), {"A0 A1 00 04 64 2F 00 00 4B 0D 0A", kSetInterval}},
      {"NavMsgConfigureToTheHighestByte",
       interval(255),
       {"A0 A1 00 04 64 2F FF 00 B4 0D 0A", kSetInterval}},
  };
}

}  // namespace

Family outputAndPower() {
  return {.queries = queries(), .settings = settings(), .orders = orders()};
}

}  // namespace orb::test
