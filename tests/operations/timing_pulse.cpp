#include <limits>

#include "operations/operation.h"

namespace orb::test {

namespace {

const Sent kQueryWidth{"A0 A1 00 02 65 02 67 0D 0A",
                       "65 02: Query 1PPS pulse width of GNSS receiver "};
const Sent kQueryFrequency{"A0 A1 00 02 65 04 61 0D 0A",
                           "65 04: Query PPS2 frequency output of GNSS receiver "};
const Sent kQueryDelay{"A0 A1 00 01 46 46 0D 0A",
                       "46 00: Query 1PPS cable delay of GNSS receiver "};
constexpr const char* kConfigureWidth = "65 01: Configure 1PPS pulse width of GNSS receiver ";
constexpr const char* kConfigureFrequency =
    "65 03: Configure PPS2 frequency output of GNSS receiver ";
constexpr const char* kConfigureDelay = "45 00: Configure cable delay of 1PPS timing ";

constexpr int kLowestDelay = std::numeric_limits<int>::min();
constexpr int kHighestDelay = std::numeric_limits<int>::max();

std::string width(const std::string& number) { return "pulse_length_us: " + number + "\n"; }
std::string frequency(const std::string& number) { return "interval_hz: " + number + "\n"; }

Drawn drawWidth(Numbers& numbers) {
  const auto width = numbers.between<unsigned int>(0, 125000);
  return drawnInRange(width >= 1 && width <= 100000,
                      calling(&Driver::gpsObtTimePulseConfigure, width),
                      [=](auto& state) { state.ppsPulseWidth = width; });
}

Drawn drawFrequency(Numbers& numbers) {
  const auto frequency = numbers.between<unsigned int>(0, 24000000);
  return drawnInRange(frequency <= 19200000, calling(&Driver::gpsObtFreqOutputConfigure, frequency),
                      [=](auto& state) { state.pps2Frequency = frequency; });
}

template <auto kMember>
Drawn drawDelay(Numbers& numbers) {
  const int delay = numbers.between(-6000, 6000);
  return drawnInRange(delay >= -5000 && delay <= 5000, calling(kMember, delay),
                      [=](auto& state) { state.cableDelay = 100 * delay; });
}

std::string longNumber(const Payload& reply) { return text(reply.u32(2)); }
std::string nanoseconds(const Payload& reply) {
  return text(static_cast<std::int32_t>(reply.u32(1)) / 100);
}
std::string delayIn(const sim::State& state) { return text(state.cableDelay / 100); }

// Hundredths of nanoseconds, signed and cut to whole ones.
const std::vector<Reading> kDelays = {{"00 00 00 00", "0"},        {"00 00 00 63", "0"},
                                      {"00 00 00 64", "1"},        {"00 00 00 96", "1"},
                                      {"FF FF FF 9D", "0"},        {"FF FF FF 9C", "-1"},
                                      {"FF FF FF 6A", "-1"},       {"FF FF FF 38", "-2"},
                                      {"7F FF FF FF", "21474836"}, {"80 00 00 00", "-21474836"}};

// reply, shortReply (it ends before its fields): a packet, and what it comes to: result, outputs,
// print. untouched: outputs after a failure. readings: bodies of further replies, outputs, prints.
// Width and frequency are read as unsigned, and printed as if they were signed.
std::vector<Query> queries() {
  return {
      {.name = "GetTimePulse",
       .call = reading(&Driver::gpsObtGetTimePulse, 0xABCD1234),
       .sends = kQueryWidth,
       .reply = {"A0 A1 00 06 65 80 12 34 56 78 ED 0D 0A", {0, "305419896", width("305419896")}},
       .shortReply = {"A0 A1 00 04 65 80 00 01 E4 0D 0A", {0, "65536", width("65536")}},
       .untouched = "0",
       .readings = {{"00 00 00 00", "0", width("0")},
                    {"00 00 00 FF", "255", width("255")},
                    {"7F FF FF FF", "2147483647", width("2147483647")},
                    {"80 00 00 00", "2147483648", width("-2147483648")},
                    {"FF FF FF FF", "4294967295", width("-1")}},
       .decoded = longNumber,
       .inState = [](auto& state) { return text(state.ppsPulseWidth); }},
      {.name = "GetFreqOutput",
       .call = reading(&Driver::gpsObtGetFreqOutput, 0xABCD1234),
       .sends = kQueryFrequency,
       .reply = {"A0 A1 00 06 65 81 12 34 56 78 EC 0D 0A",
                 {0, "305419896", frequency("305419896")}},
       .shortReply = {"A0 A1 00 04 65 81 00 01 E5 0D 0A", {0, "65536", frequency("65536")}},
       .untouched = "0",
       .readings = {{"00 00 00 00", "0", frequency("0")},
                    {"00 00 00 FF", "255", frequency("255")},
                    {"7F FF FF FF", "2147483647", frequency("2147483647")},
                    {"80 00 00 00", "2147483648", frequency("-2147483648")},
                    {"FF FF FF FF", "4294967295", frequency("-1")}},
       .decoded = longNumber,
       .inState = [](auto& state) { return text(state.pps2Frequency); }},
      {.name = "GetCableDelayConfig",
       .call = reading(&Driver::gpsObtGetCableDelayConfig, 77),
       .sends = kQueryDelay,
       .reply = {"A0 A1 00 05 BB 12 34 56 78 B3 0D 0A", {0, "3054198"}},
       .shortReply = {"A0 A1 00 03 BB FF FF BB 0D 0A", {0, "-655"}},
       .untouched = "0",
       .readings = kDelays,
       .decoded = nanoseconds,
       .inState = delayIn},
      {.name = "GetAntennaDelay",
       .call = reading(&Driver::getAntennaDelay, 77),
       .sends = kQueryDelay,
       .reply = {"A0 A1 00 05 BB FF FF F5 10 5E 0D 0A", {0, "-28"}},
       .shortReply = {"A0 A1 00 01 BB BB 0D 0A", {0, "0"}},
       .untouched = "0",
       .readings = kDelays,
       .decoded = nanoseconds,
       .inState = delayIn},
  };
}

// A delay, its packet, and the result. Times 100, some wrap into the range: what is read back is
// then not what was asked for.
struct Delay {
  int delay;
  const char* packet;
  unsigned int result;
};
constexpr Delay kSentDelays[] = {{-5000, "A0 A1 00 06 45 FF F8 5E E0 00 FC 0D 0A", 0},
                                 {-4999, "A0 A1 00 06 45 FF F8 5F 44 00 59 0D 0A", 0},
                                 {-1, "A0 A1 00 06 45 FF FF FF 9C 00 26 0D 0A", 0},
                                 {0, "A0 A1 00 06 45 00 00 00 00 00 45 0D 0A", 0},
                                 {1, "A0 A1 00 06 45 00 00 00 64 00 21 0D 0A", 0},
                                 {4999, "A0 A1 00 06 45 00 07 A0 BC 00 5E 0D 0A", 0},
                                 {5000, "A0 A1 00 06 45 00 07 A1 20 00 C3 0D 0A", 0},
                                 {42949672, "A0 A1 00 06 45 FF FF FF A0 00 1A 0D 0A", 1},
                                 {42949673, "A0 A1 00 06 45 00 00 00 04 00 41 0D 0A", 1},
                                 {42944673, "A0 A1 00 06 45 FF F8 5E E4 00 F8 0D 0A", 1},
                                 {42954672, "A0 A1 00 06 45 00 07 A0 C0 00 22 0D 0A", 1},
                                 {-42949673, "A0 A1 00 06 45 FF FF FF FC 00 46 0D 0A", 1},
                                 {1073741824, "A0 A1 00 06 45 00 00 00 00 00 45 0D 0A", 1},
                                 {kHighestDelay, "A0 A1 00 06 45 FF FF FF 9C 00 26 0D 0A", 1},
                                 {kLowestDelay, "A0 A1 00 06 45 00 00 00 00 00 45 0D 0A", 1}};
template <auto kMember>
Setting settingDelay(Setting row) {
  for (const Delay& delay : kSentDelays) {
    row.values.push_back({calling(kMember, delay.delay), delay.packet, {delay.result}});
  }
  for (const int delay : {-5001, 5001, -100000, 100000, 21474836, 21474837, 42944672, 42954673,
                          -42944672, -42954673, kHighestDelay - 5000, kLowestDelay + 5001}) {
    row.rejected.push_back(calling(kMember, delay));
  }
  return row;
}

// reply has the value that call sets, otherReply and mismatches another one, shortReply ends before
// it: a packet, and what it comes to: result (0 for reply, otherwise 1 by default), outputs, print.
// values: further calls, packets, and what they come to.
std::vector<Setting> settings() {
  const auto setWidth = [](unsigned int value) {
    return calling(&Driver::gpsObtTimePulseConfigure, value);
  };
  const auto setFrequency = [](unsigned int value) {
    return calling(&Driver::gpsObtFreqOutputConfigure, value);
  };
  const auto keptWidth = [&](unsigned int value, const char* packet) -> Value {
    return {setWidth(value), packet, {0, "", width(std::to_string(value))}};
  };
  const auto keptFrequency = [&](unsigned int value, const char* packet) -> Value {
    return {setFrequency(value), packet, {0, "", frequency(std::to_string(value))}};
  };
  return {
      {.name = "TimePulseConfigure",
       .call = setWidth(74565),
       .sends = {"A0 A1 00 07 65 01 00 01 23 45 00 03 0D 0A", kConfigureWidth},
       .reads = kQueryWidth,
       .reply = {"A0 A1 00 06 65 80 00 01 23 45 82 0D 0A", {0, "", width("74565")}},
       .otherReply = {"A0 A1 00 06 65 80 01 01 23 45 83 0D 0A", {1, "", width("16851781")}},
       .shortReply = {"A0 A1 00 05 65 80 00 01 23 C7 0D 0A", {1, "", width("74496")}},
       .values = {keptWidth(1, "A0 A1 00 07 65 01 00 00 00 01 00 65 0D 0A"),
                  keptWidth(256, "A0 A1 00 07 65 01 00 00 01 00 00 65 0D 0A"),
                  keptWidth(99999, "A0 A1 00 07 65 01 00 01 86 9F 00 7C 0D 0A"),
                  keptWidth(100000, "A0 A1 00 07 65 01 00 01 86 A0 00 43 0D 0A")},
       .rejected = {setWidth(0), setWidth(100001), setWidth(0x01000001), setWidth(0x80000000),
                    setWidth(0xFFFFFFFF)},
       .draw = drawWidth},
      {.name = "FreqOutputConfigure",
       .call = setFrequency(16909060),
       .sends = {"A0 A1 00 07 65 03 01 02 03 04 00 62 0D 0A", kConfigureFrequency},
       .reads = kQueryFrequency,
       .reply = {"A0 A1 00 06 65 81 01 02 03 04 E0 0D 0A", {0, "", frequency("16909060")}},
       .otherReply = {"A0 A1 00 06 65 81 01 02 03 05 E1 0D 0A", {1, "", frequency("16909061")}},
       .shortReply = {"A0 A1 00 05 65 81 01 02 03 E4 0D 0A", {1, "", frequency("16909056")}},
       .values = {keptFrequency(1, "A0 A1 00 07 65 03 00 00 00 01 00 67 0D 0A"),
                  keptFrequency(19199999, "A0 A1 00 07 65 03 01 24 F7 FF 00 4B 0D 0A"),
                  keptFrequency(19200000, "A0 A1 00 07 65 03 01 24 F8 00 00 BB 0D 0A")},
       .rejected = {setFrequency(19200001), setFrequency(0x80000000), setFrequency(0xFFFFFFFF)},
       .draw = drawFrequency},
      // An unanswered read-back leaves 0.
      {.name = "FreqOutputConfigureToZero",
       .call = setFrequency(0),
       .sends = {"A0 A1 00 07 65 03 00 00 00 00 00 66 0D 0A", kConfigureFrequency},
       .reads = kQueryFrequency,
       .reply = {"A0 A1 00 06 65 81 00 00 00 00 E4 0D 0A", {0, "", frequency("0")}},
       .otherReply = {"A0 A1 00 06 65 81 00 00 00 01 E5 0D 0A", {1, "", frequency("1")}},
       .shortReply = {"A0 A1 00 02 65 81 E4 0D 0A", {0, "", frequency("0")}},
       .noReply = {4}},
      settingDelay<&Driver::gpsObtCableDelayConfig>(
          {.name = "CableDelayConfig",
           .call = calling(&Driver::gpsObtCableDelayConfig, -5000),
           .sends = {"A0 A1 00 06 45 FF F8 5E E0 00 FC 0D 0A", kConfigureDelay},
           .reads = kQueryDelay,
           .reply = {"A0 A1 00 05 BB FF F8 5E E0 02 0D 0A"},
           .otherReply = {"A0 A1 00 05 BB 00 07 A1 20 3D 0D 0A"},
           .shortReply = {"A0 A1 00 02 BB FF 44 0D 0A"},
           .draw = drawDelay<&Driver::gpsObtCableDelayConfig>}),
      // Compared in whole nanoseconds: 28.99 confirms 28.
      settingDelay<&Driver::setAntennaDelay>(
          {.name = "SetAntennaDelay",
           .call = calling(&Driver::setAntennaDelay, 28),
           .sends = {"A0 A1 00 06 45 00 00 0A F0 00 BF 0D 0A", kConfigureDelay},
           .reads = kQueryDelay,
           .reply = {"A0 A1 00 05 BB 00 00 0B 53 E3 0D 0A"},
           .otherReply = {"A0 A1 00 05 BB 00 00 0A 8C 3D 0D 0A"},
           .shortReply = {"A0 A1 00 04 BB 00 00 0A B1 0D 0A"},
           .mismatches = {"00 00 0B 54", "00 00 0A EF"},
           .draw = drawDelay<&Driver::setAntennaDelay>}),
      {.name = "SetAntennaDelayToZero",
       .call = calling(&Driver::setAntennaDelay, 0),
       .sends = {"A0 A1 00 06 45 00 00 00 00 00 45 0D 0A", kConfigureDelay},
       .reads = kQueryDelay,
       .reply = {"A0 A1 00 05 BB 00 00 00 00 BB 0D 0A"},
       .otherReply = {"A0 A1 00 05 BB 00 00 00 64 DF 0D 0A"},
       .shortReply = {"A0 A1 00 01 BB BB 0D 0A", {0}},
       .noReply = {4}},
  };
}

}  // namespace

Family timingPulse() { return {.queries = queries(), .settings = settings()}; }

}  // namespace orb::test
