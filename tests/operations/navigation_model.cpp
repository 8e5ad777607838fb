#include <array>

#include "operations/operation.h"

namespace orb::test {

namespace {

using namespace std::chrono_literals;

// The packets of interference detection have no place for the attribute byte.
const Sent kSwitchOn{"A0 A1 00 04 64 06 01 00 63 0D 0A",
                     "64 06: Configure interference detection of GNSS receiver "};
const Sent kSwitchOff{"A0 A1 00 04 64 06 00 00 62 0D 0A",
                      "64 06: Configure interference detection of GNSS receiver "};
const Sent kQueryDetection{"A0 A1 00 02 64 07 63 0D 0A",
                           "64 07: Query interference detection status of GNSS receiver "};
// On and off, with the status 2; without either.
constexpr const char* kReportsOn = "A0 A1 00 04 64 83 01 02 E4 0D 0A";
constexpr const char* kReportsOff = "A0 A1 00 04 64 83 00 02 E5 0D 0A";
constexpr const char* kReportsNothing = "A0 A1 00 02 64 83 E7 0D 0A";

constexpr const char* kSetMode = "64 17: Configure the navigation mode of GNSS receiver ";
constexpr const char* kSetMode0 = "A0 A1 00 04 64 17 00 00 73 0D 0A";
constexpr const char* kSetMode1 = "A0 A1 00 04 64 17 01 00 72 0D 0A";
constexpr const char* kSetMode2 = "A0 A1 00 04 64 17 02 00 71 0D 0A";
constexpr const char* kSetMode3 = "A0 A1 00 04 64 17 03 00 70 0D 0A";
constexpr const char* kSetMode4 = "A0 A1 00 04 64 17 04 00 77 0D 0A";
constexpr const char* kSetMode5 = "A0 A1 00 04 64 17 05 00 76 0D 0A";
const Sent kQueryMode{"A0 A1 00 02 64 18 7C 0D 0A",
                      "64 18: Query the navigation mode of GNSS receiver "};

std::string prints(bool control, int status) {
  return "control: " + std::to_string(control) + " nJamStatus " + std::to_string(status) + "\n";
}

Drawn drawDetection(Numbers& numbers) {
  const bool on = numbers.coin();
  return {
      calling(numbers.coin() ? &Driver::gpsObtJamDetectConfig : &Driver::setJammingDetection, on),
      0, [=](auto& state) { state.interferenceDetection = on; }};
}

// The receiver's mode for each model; 0 for any other.
std::uint8_t modeOf(unsigned int model) {
  constexpr std::array<std::uint8_t, 9> kModes = {1, 1, 1, 2, 3, 4, 5, 5, 0};
  return model < kModes.size() ? kModes[model] : 0;
}

Drawn drawModel(Numbers& numbers) {
  const auto model = numbers.between<unsigned char>(0, 12);
  const auto effect = [=](auto& state) { state.navigationMode = modeOf(model); };
  if (numbers.coin()) {
    return {calling(&Driver::gpsObtChangeDynamicMode, model), 0, effect};
  }
  return {[=](auto& driver) { return Outcome(driver.setDynamicModel(model)); }, 0, effect};
}

// The model and, by its number, the fix mode: 0 for 2D, 1 for 3D, 2 for 3D and then 2D.
Drawn drawModelAndFix(Numbers& numbers) {
  constexpr std::array<sim::FixNavMask, 3> kMasks = {{{1, 1}, {0, 0}, {0, 1}}};
  const auto model = numbers.between<unsigned char>(0, 12);
  const auto fixMode = numbers.between<unsigned char>(0, 3);
  return {[=](auto& driver) { return Outcome(driver.setDynamicModel(model, fixMode)); },
          fixMode < kMasks.size() ? 0U : 256U,
          [=](auto& state) {
            state.navigationMode = modeOf(model);
            if (fixMode < kMasks.size()) {
              state.fixNavMask = kMasks[fixMode];
            }
          }};
}

Drawn drawReadingModel(Numbers& /*numbers*/) {
  return {[](auto& driver) {
    unsigned char model = 77;
    unsigned char fixMode = 78;
    return Outcome(driver.getDynamicModel(model, fixMode));
  }};
}

// reply, shortReply (it ends before its fields): a packet, and what it comes to: result, outputs,
// print. untouched: outputs after a failure. readings: bodies of further replies, outputs, prints.
std::vector<Query> queries() {
  return {
      // On by the lowest bit; the status is the whole next byte.
      {.name = "GetJamDetectConfig",
       .call = reading(&Driver::gpsOrbGetJamDetectConfig, true, 77),
       .sends = kQueryDetection,
       .reply = {kReportsOn, {0, "true, 2", prints(true, 2)}},
       .shortReply = {"A0 A1 00 03 64 83 01 E6 0D 0A", {0, "true, 0", prints(true, 0)}},
       .untouched = "false, 0",
       .readings = {{"00 00", "false, 0", prints(false, 0)},
                    {"02 7F", "false, 127", prints(false, 127)},
                    {"03 80", "true, 128", prints(true, 128)},
                    {"FE 01", "false, 1", prints(false, 1)},
                    {"FF FF", "true, 255", prints(true, 255)}},
       .decoded = [](auto& reply) { return text(reply.u8(2) % 2 == 1, reply.u8(3)); },
       .inState =
           [](auto& state) {
             return state.interferenceDetection % 2 == 1 ? text(true, state.interferenceStatus)
                                                         : "false, *";
           }},
      // Off, although the receiver says that it is on.
      {.name = "GetJammingDetection",
       .call = reading(&Driver::getJammingDetection, true),
       .sends = kQueryDetection,
       .reply = {kReportsOn, {0, "false", prints(true, 2)}},
       .shortReply = {kReportsNothing, {0, "false", prints(false, 0)}},
       .untouched = "false",
       .decoded = [](auto&) { return text(false); },
       .inState = [](auto&) { return text(false); }},
      {.name = "GetChangeDynamicMode",
       .call = reading(&Driver::gpsObtGetChangeDynamicMode, 0xABCD1234),
       .sends = kQueryMode,
       .reply = {"A0 A1 00 03 64 8B 07 E8 0D 0A", {0, "7"}},
       .shortReply = {"A0 A1 00 02 64 8B EF 0D 0A", {0, "0"}},
       .untouched = "2882343476",
       .readings = {{"00", "0"}, {"08", "8"}, {"80", "128"}, {"FF", "255"}},
       .decoded = [](auto& reply) { return text(reply.u8(2)); },
       .inState = [](auto& state) { return text(state.navigationMode); }},
  };
}

// An unanswered read-back leaves "off".
Setting settingDetection(const std::string& name, unsigned int (Driver::*member)(bool), bool on) {
  return {.name = name,
          .call = calling(member, on),
          .sends = on ? kSwitchOn : kSwitchOff,
          .reads = kQueryDetection,
          .reply = {on ? kReportsOn : kReportsOff, {0, "", prints(on, 2)}},
          .otherReply = {on ? kReportsOff : kReportsOn, {1, "", prints(!on, 2)}},
          .shortReply = {kReportsNothing, {on ? 1U : 0U, "", prints(false, 0)}},
          .noReply = {on ? 5U : 4U}};
}

// reply has the value that call sets, otherReply and mismatches another one, shortReply ends before
// it: a packet, and what it comes to: result (0 for reply, otherwise 1 by default), outputs, print.
// values: further calls, packets, and what they come to.
std::vector<Setting> settings() {
  Setting detectionOn = settingDetection("JamDetectConfigOn", &Driver::gpsObtJamDetectConfig, true);
  detectionOn.draw = drawDetection;
  const auto model = [](obt_DynamicState_t value) {
    return calling(&Driver::gpsObtChangeDynamicMode, value);
  };
  const auto byInterface = [](unsigned char value) -> Call {
    return [=](auto& driver) { return Outcome(driver.setDynamicModel(value)); };
  };
  return {
      detectionOn,
      settingDetection("JamDetectConfigOff", &Driver::gpsObtJamDetectConfig, false),
      settingDetection("SetJammingDetectionOn", &Driver::setJammingDetection, true),
      settingDetection("SetJammingDetectionOff", &Driver::setJammingDetection, false),
      {.name = "ChangeDynamicMode",
       .call = model(2),
       .sends = {kSetMode1, kSetMode},
       .settle = 100ms,
       .reads = kQueryMode,
       .reply = {"A0 A1 00 03 64 8B 01 EE 0D 0A"},
       .otherReply = {"A0 A1 00 03 64 8B 02 ED 0D 0A"},  // the model, which is not what was sent
       .shortReply = {"A0 A1 00 02 64 8B EF 0D 0A"},
       .values = {{model(0), kSetMode1},
                  {model(1), kSetMode1},
                  {model(2), kSetMode1},
                  {model(3), kSetMode2},
                  {model(4), kSetMode3},
                  {model(5), kSetMode4},
                  {model(6), kSetMode5},
                  {model(7), kSetMode5},
                  {model(8), kSetMode0},
                  {model(9), kSetMode0},
                  {model(255), kSetMode0},
                  {model(256), kSetMode0},
                  {model(260), kSetMode0},
                  {model(0x80000000), kSetMode0},
                  {model(0xFFFFFFFF), kSetMode0},
                  {byInterface(255), kSetMode0}},
       .draw = drawModel},
      {.name = "ChangeDynamicModeToZero",
       .call = model(8),
       .sends = {kSetMode0, kSetMode},
       .settle = 100ms,
       .reads = kQueryMode,
       .reply = {"A0 A1 00 03 64 8B 00 EF 0D 0A"},
       .otherReply = {"A0 A1 00 03 64 8B 08 E7 0D 0A"},
       .shortReply = {"A0 A1 00 02 64 8B EF 0D 0A", {0}},
       .noReply = {4}},
      {.name = "SetDynamicModel",
       .call = byInterface(6),
       .sends = {kSetMode5, kSetMode},
       .settle = 100ms,
       .reads = kQueryMode,
       .reply = {"A0 A1 00 03 64 8B 05 EA 0D 0A"},
       .otherReply = {"A0 A1 00 03 64 8B 06 E9 0D 0A"},
       .shortReply = {"A0 A1 00 02 64 8B EF 0D 0A"}},
  };
}

}  // namespace

Family navigationModel() {
  return {.queries = queries(),
          .settings = settings(),
          .composites = {{"SetDynamicModelAndFixMode", {0x648B, 0x6488}, drawModelAndFix},
                         {"GetDynamicModel", {0x6488, 0x648B}, drawReadingModel}}};
}

}  // namespace orb::test
