#include "operations/operation.h"

namespace orb::test {

namespace {

using namespace std::chrono_literals;

constexpr const char* kConfigure = "55 00: Configure 1PPS Output Mode of GNSS receiver ";
const Sent kQueryMode{"A0 A1 00 01 56 56 0D 0A", "56 00: Query 1PPS Output Mode of GNSS receiver "};
const Sent kSetUtc{"A0 A1 00 04 55 02 01 00 56 0D 0A", kConfigure};

std::string prints(int mode, int alignSource) {
  return "1PPS output mode: " + std::to_string(mode) +
         " \n1PPS Align source: " + std::to_string(alignSource) + " \n";
}

std::string referenceOf(unsigned int alignSource) {
  return text(alignSource == 0 ? "GNSS" : alignSource == 1 ? "UTC" : "before");
}

Drawn drawMode(Numbers& numbers) {
  const auto mode = numbers.between<unsigned int>(0, 300);
  const unsigned int source = numbers.byte();
  return {calling(&Driver::gpsOrb1ppsOutputMode, mode, source), mode > 255 ? 1U : 0U,
          [=](auto& state) {
            state.ppsOutput = {static_cast<std::uint8_t>(mode), static_cast<std::uint8_t>(source)};
          }};
}

Drawn drawReference(Numbers& numbers) {
  switch (numbers.between(0, 2)) {
    case 0:
      return {calling(&Driver::setTimeReference, "GNSS"), 1};
    case 1:
      return {calling(&Driver::setTimeReference, "UTC"), 0, [](auto& state) {
                state.ppsOutput = {2, 1};
              }};
    default:
      return {calling(&Driver::setTimeReference, "GPS"), 0, [](auto& state) {
                state.ppsOutput = {2, 1};
              }};
  }
}

Drawn drawTimePulse(Numbers& numbers) {
  const std::uint8_t mode = numbers.byte();
  return {calling(&Driver::configTimePulse, 1000, mode, true), 0, [=](auto& state) {
            state.ppsOutput = {mode, 0};
          }};
}

// reply, shortReply (it ends before its fields): a packet, and what it comes to: result, outputs,
// print. untouched: outputs after a failure. readings: bodies of further replies, outputs, prints.
std::vector<Query> queries() {
  return {
      {.name = "Get1ppsOutputMode",
       .call = reading(&Driver::gpsOrbGet1ppsOutputMode, 0xABCD1234, 77),
       .sends = kQueryMode,
       .reply = {"A0 A1 00 03 C3 02 01 C0 0D 0A", {0, "2, 1", prints(2, 1)}},
       .shortReply = {"A0 A1 00 02 C3 02 C1 0D 0A", {0, "2, 0", prints(2, 0)}},
       .untouched = "2882343476, 77",
       .readings = {{"00 00", "0, 0", prints(0, 0)},
                    {"7F 80", "127, 128", prints(127, 128)},
                    {"80 7F", "128, 127", prints(128, 127)},
                    {"FF FF", "255, 255", prints(255, 255)}},
       .decoded = [](auto& reply) { return text(reply.u8(1), reply.u8(2)); },
       .inState =
           [](auto& state) { return text(state.ppsOutput.mode, state.ppsOutput.alignSource); }},
      // By the align source alone, and left alone for one that has no name. A failed query leaves
      // the align source of GNSS time.
      {.name = "GetTimeReference",
       .call = reading(&Driver::getTimeReference, "before"),
       .sends = kQueryMode,
       .reply = {"A0 A1 00 03 C3 02 01 C0 0D 0A", {0, "\"UTC\"", prints(2, 1)}},
       .shortReply = {"A0 A1 00 01 C3 C3 0D 0A", {0, "\"GNSS\"", prints(0, 0)}},
       .untouched = "\"GNSS\"",
       .readings = {{"00 00", "\"GNSS\"", prints(0, 0)},
                    {"FF 00", "\"GNSS\"", prints(255, 0)},
                    {"00 01", "\"UTC\"", prints(0, 1)},
                    {"FF 01", "\"UTC\"", prints(255, 1)},
                    {"02 02", "\"before\"", prints(2, 2)},
                    {"00 80", "\"before\"", prints(0, 128)},
                    {"01 FF", "\"before\"", prints(1, 255)}},
       .decoded = [](auto& reply) { return referenceOf(reply.u8(2)); },
       .inState = [](auto& state) { return referenceOf(state.ppsOutput.alignSource); }},
  };
}

// reply has the value that call sets, otherReply and mismatches another one, shortReply ends before
// it: a packet, and what it comes to: result (0 for reply, otherwise 1 by default), outputs, print.
// values: further calls, packets, and what they come to.
// The low bytes are sent, and the whole values compared with what is read back; but nothing is
// compared after a failure.
std::vector<Setting> settings() {
  const auto mode = [](unsigned int value, unsigned int alignSource) {
    return calling(&Driver::gpsOrb1ppsOutputMode, value, alignSource);
  };
  const auto pulse = [](unsigned short period, bool enable) -> Value {
    return {calling(&Driver::configTimePulse, period, 3, enable),
            "A0 A1 00 04 55 03 00 00 56 0D 0A",
            {0, "", prints(3, 0)}};
  };
  Setting reference{.name = "SetTimeReference",
                    .call = calling(&Driver::setTimeReference, "UTC"),
                    .sends = kSetUtc,
                    .settle = 100ms,
                    .reads = kQueryMode,
                    .reply = {"A0 A1 00 03 C3 02 01 C0 0D 0A", {0, "", prints(2, 1)}},
                    .otherReply = {"A0 A1 00 03 C3 00 01 C2 0D 0A", {1, "", prints(0, 1)}},
                    .shortReply = {"A0 A1 00 02 C3 02 C1 0D 0A", {1, "", prints(2, 0)}},
                    .noReply = {4},
                    .comparesAfterFailure = false,
                    .values = {{calling(&Driver::setTimeReference, "GPS"),
                                kSetUtc.packet,
                                {0, "", prints(2, 1)}}},
                    .draw = drawReference};
  // "GNSS" is what the reference is read as.
  for (const std::string wrong :
       {"GNSS", "utc", "gps", "Utc", "", " UTC", "UTC ", "UTC1", "GP", "GLONASS"}) {
    reference.rejected.push_back(calling(&Driver::setTimeReference, wrong));
  }
  reference.rejected.push_back(calling(&Driver::setTimeReference, std::string("UTC\0", 4)));
  return {
      {.name = "OutputMode",
       .call = mode(3, 200),
       .sends = {"A0 A1 00 04 55 03 C8 00 9E 0D 0A", kConfigure},
       .settle = 100ms,
       .reads = kQueryMode,
       .reply = {"A0 A1 00 03 C3 03 C8 08 0D 0A", {0, "", prints(3, 200)}},
       .otherReply = {"A0 A1 00 03 C3 03 C9 09 0D 0A", {1, "", prints(3, 201)}},
       .shortReply = {"A0 A1 00 02 C3 03 C0 0D 0A", {1, "", prints(3, 0)}},
       .noReply = {4},
       .comparesAfterFailure = false,
       .mismatches = {"02 C8", "03 00"},
       .values = {{mode(258, 0), "A0 A1 00 04 55 02 00 00 57 0D 0A", {1, "", prints(2, 0)}},
                  {mode(2, 257), "A0 A1 00 04 55 02 01 00 56 0D 0A", {1, "", prints(2, 1)}},
                  {mode(256, 256), "A0 A1 00 04 55 00 00 00 55 0D 0A", {1, "", prints(0, 0)}},
                  {mode(0xFFFFFFFF, 0),
                   "A0 A1 00 04 55 FF 00 00 AA 0D 0A",
                   {1, "", prints(255, 0)}}},
       .draw = drawMode},
      reference,
      // The period and the switch do not count.
      {.name = "ConfigTimePulse",
       .call = calling(&Driver::configTimePulse, 1000, 255, true),
       .sends = {"A0 A1 00 04 55 FF 00 00 AA 0D 0A", kConfigure},
       .settle = 100ms,
       .reads = kQueryMode,
       .reply = {"A0 A1 00 03 C3 FF 00 3C 0D 0A", {0, "", prints(255, 0)}},
       .otherReply = {"A0 A1 00 03 C3 FF 01 3D 0D 0A", {1, "", prints(255, 1)}},
       .shortReply = {"A0 A1 00 01 C3 C3 0D 0A", {1, "", prints(0, 0)}},
       .noReply = {4},
       .comparesAfterFailure = false,
       .values = {pulse(0, false), pulse(0, true), pulse(1, false), pulse(65535, true)},
       .draw = drawTimePulse},
  };
}

}  // namespace

Family ppsOutputMode() { return {.queries = queries(), .settings = settings()}; }

}  // namespace orb::test
