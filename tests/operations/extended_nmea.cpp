#include <algorithm>

#include "operations/operation.h"

namespace orb::test {

namespace {

constexpr const char* kConfigure =
    "64 02: Configure extended NMEA message interval of GNSS Receiver ";
const Sent kInterval5{"A0 A1 00 0F 64 02 05 05 05 05 05 05 05 00 00 00 00 00 00 63 0D 0A",
                      kConfigure};
const Sent kInterval0{"A0 A1 00 0F 64 02 00 00 00 00 00 00 00 00 00 00 00 00 00 66 0D 0A",
                      kConfigure};
const Sent kQueryInterval{"A0 A1 00 02 64 03 67 0D 0A",
                          "64 03: Query extended NMEA message interval of GNSS receiver "};

constexpr const char* kReply5 = "A0 A1 00 0E 64 81 05 01 02 03 04 06 07 08 09 0A 0B 0C E9 0D 0A";
constexpr const char* kReply6 = "A0 A1 00 0E 64 81 06 05 05 05 05 05 05 05 05 05 05 05 E6 0D 0A";
constexpr const char* kShortReply = "A0 A1 00 02 64 81 E5 0D 0A";

std::function<void(sim::State&)> effect(unsigned int interval) {
  return [=](auto& state) {
    state.nmeaIntervals.fill(0);
    std::fill_n(state.nmeaIntervals.begin(), 7, static_cast<std::uint8_t>(interval));
  };
}

Drawn drawInterval(Numbers& numbers) {
  const auto interval = numbers.between<unsigned int>(0, 300);
  return {calling(&Driver::gpsObtNmeaExtendedConfigure, interval), interval > 255 ? 1U : 0U,
          effect(interval)};
}

Drawn drawPolling(Numbers& numbers) {
  const std::uint8_t interval = numbers.byte();
  return {calling(&Driver::configurNmeaPollingPartial, interval), 0, effect(interval)};
}

// reply, shortReply (it ends before its fields): a packet, and what it comes to: result, outputs,
// print. untouched: outputs after a failure. readings: bodies of further replies, outputs, prints.
std::vector<Query> queries() {
  return {{.name = "GetNmeaExtendedConfigure",
           .call = reading(&Driver::gpsObtGetNmeaExtendedConfigure, 0xABCD1234),
           .sends = kQueryInterval,
           .reply = {kReply5, {0, "5"}},
           .shortReply = {kShortReply, {0, "0"}},
           .untouched = "2882343476",
           .readings = {{"00 01 01 01 01 01 01 01 01 01 01 01", "0"},
                        {"7F 00 00 00 00 00 00 00 00 00 00 00", "127"},
                        {"80 00 00 00 00 00 00 00 00 00 00 00", "128"},
                        {"FF 00 00 00 00 00 00 00 00 00 00 00", "255"},
                        {"09 08", "9"}},
           .decoded = [](auto& reply) { return text(reply.u8(2)); },
           .inState = [](auto& state) { return text(state.nmeaIntervals[0]); }}};
}

// reply has the value that call sets, otherReply and mismatches another one, shortReply ends before
// it: a packet, and what it comes to: result (0 for reply, otherwise 1 by default), outputs, print.
// values: further calls, packets, and what they come to.
// The low byte is sent, and the whole interval compared with what is read back.
std::vector<Setting> settings() {
  const auto interval = [](unsigned int value) {
    return calling(&Driver::gpsObtNmeaExtendedConfigure, value);
  };
  return {
      {.name = "NmeaExtendedConfigure",
       .call = interval(5),
       .sends = kInterval5,
       .reads = kQueryInterval,
       .reply = {kReply5},
       .otherReply = {kReply6},
       .shortReply = {kShortReply},
       .values = {{interval(255),
                   "A0 A1 00 0F 64 02 FF FF FF FF FF FF FF 00 00 00 00 00 00 99 0D 0A"},
                  {interval(256), kInterval0.packet, {1}},
                  {interval(300),
                   "A0 A1 00 0F 64 02 2C 2C 2C 2C 2C 2C 2C 00 00 00 00 00 00 4A 0D 0A",
                   {1}},
                  {interval(0xFFFFFFFF),
                   "A0 A1 00 0F 64 02 FF FF FF FF FF FF FF 00 00 00 00 00 00 99 0D 0A",
                   {1}}},
       .draw = drawInterval},
      // An unanswered read-back leaves 0.
      {.name = "NmeaExtendedConfigureToZero",
       .call = interval(0),
       .sends = kInterval0,
       .reads = kQueryInterval,
       .reply = {"A0 A1 00 0E 64 81 00 01 01 01 01 01 01 01 01 01 01 01 E4 0D 0A"},
       .otherReply = {kReply6},
       .shortReply = {kShortReply, {0}},
       .noReply = {4}},
      {.name = "NmeaPollingPartial",
       .call = calling(&Driver::configurNmeaPollingPartial, 5),
       .sends = kInterval5,
       .reads = kQueryInterval,
       .reply = {kReply5},
       .otherReply = {kReply6},
       .shortReply = {kShortReply},
       .draw = drawPolling},
  };
}

}  // namespace

Family extendedNmea() { return {.queries = queries(), .settings = settings()}; }

}  // namespace orb::test
