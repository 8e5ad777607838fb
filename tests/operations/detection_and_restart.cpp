#include "operations/operation.h"

namespace orb::test {

namespace {

Drawn drawFactoryDefaults(Numbers& /*numbers*/) {
  return {calling(&Driver::gpsObtSetFactoryDefaults), 0,
          [](sim::State& state) { static_cast<sim::Settings&>(state) = {}; }};
}

// A name, the call, and what it sends.
std::vector<Order> orders() {
  constexpr const char* kRestarts = "64 3F: Unknown message type";
  constexpr const char* kResets = "01 00: Force system to restart";
  constexpr const char* kSetsUp =
      "05 00: Set up serial port COM, baud rate, data bits, stop bits and parity ";
  const Sent emptyReset{"A0 A1 00 0F 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 0D 0A",
                        kResets};
  const Sent resetWithTime{"A0 A1 00 0F 01 01 07 BC 01 06 00 00 0A 0E A3 31 00 00 00 2A 0D 0A",
                           kResets};
  const Sent resetWithoutTime{"A0 A1 00 0F 01 03 00 00 00 00 00 00 00 00 00 00 00 00 00 02 0D 0A",
                              kResets};
  const Sent factoryDefaults{"A0 A1 00 02 04 01 05 0D 0A",
                             "04 00: Set system to factory default values "};
  std::vector<Order> orders = {
      {"SetFactoryDefaults", calling(&Driver::gpsObtSetFactoryDefaults), factoryDefaults,
       drawFactoryDefaults},
      {"ResetToTheMakersDefaults", calling(&Driver::resetorbitekDefaults), factoryDefaults},
      {"RestartWithFlag",
       calling(&Driver::restart, true),
       {"A0 A1 00 03 64 3F 01 5A 0D 0A", kRestarts}},
      {"RestartWithoutFlag",
       calling(&Driver::restart, false),
       {"A0 A1 00 03 64 3F 00 5B 0D 0A", kRestarts}},
      {"SoftResetWithTime", calling(&Driver::gpsObtSendSoftReset, 1), resetWithTime},
      {"SoftResetWithoutTime", calling(&Driver::gpsObtSendSoftReset, 3), resetWithoutTime},
      {"ForceRestartWithTime", calling(&Driver::forceRestart, 0xFF01), resetWithTime},
      {"ForceRestartWithoutTime", calling(&Driver::forceRestart, 0x0103), resetWithoutTime},
      {"ForceRestartOfNoMode", calling(&Driver::forceRestart, 0x0300), emptyReset},
      // Its failure is logged, not reported.
      {.name = "GetResetInfo",
       .call = calling(&Driver::getResetInfo),
       .sends = emptyReset,
       .resultUnsent = 0},
  };
  for (const unsigned char mode : std::initializer_list<unsigned char>{0, 2, 4, 5, 255}) {
    orders.push_back({"SoftResetInMode" + std::to_string(mode),
                      calling(&Driver::gpsObtSendSoftReset, mode), emptyReset});
  }
  // A port, the rate in baud, and what is sent. A rate without a code counts as 9600.
  const struct {
    unsigned char port;
    unsigned int rate;
    const char* packet;
  } setUps[] = {{0, 4800, "A0 A1 00 04 05 00 00 01 04 0D 0A"},
                {0, 9600, "A0 A1 00 04 05 00 01 01 05 0D 0A"},
                {0, 19200, "A0 A1 00 04 05 00 02 01 06 0D 0A"},
                {0, 38400, "A0 A1 00 04 05 00 03 01 07 0D 0A"},
                {0, 57600, "A0 A1 00 04 05 00 04 01 00 0D 0A"},
                {0, 115200, "A0 A1 00 04 05 00 05 01 01 0D 0A"},
                {1, 14400, "A0 A1 00 04 05 01 01 01 04 0D 0A"},
                {1, 0, "A0 A1 00 04 05 01 01 01 04 0D 0A"},
                {1, 9601, "A0 A1 00 04 05 01 01 01 04 0D 0A"},
                {1, 230400, "A0 A1 00 04 05 01 01 01 04 0D 0A"},
                {1, 4294967295, "A0 A1 00 04 05 01 01 01 04 0D 0A"},
                {255, 9600, "A0 A1 00 04 05 FF 01 01 FA 0D 0A"}};
  for (const auto& [port, rate, packet] : setUps) {
    orders.push_back({"SetUartPort" + std::to_string(port) + "To" + std::to_string(rate) + "Baud",
                      calling(&Driver::gpsObtSetUartPort, port, rate),
                      {packet, kSetsUp}});
  }
  return orders;
}

}  // namespace

// Whether a receiver is there is the output. Only the acknowledgement of the query tells that one
// is.
Family detectionAndRestart() {
  return {.queries = {{.name = "ChipDetect",
                       .call = [](auto& driver) { return Outcome(0, driver.gpsObtChipDetect()); },
                       .sends = {"A0 A1 00 02 02 01 03 0D 0A",
                                 "02 00: Query revision information of software"},
                       .reply = {"A0 A1 00 02 83 02 81 0D 0A", {0, "1"}},
                       .shortReply = {"A0 A1 00 01 83 83 0D 0A", {0, "0"}},
                       .untouched = "0",
                       .noReply = {0},
                       .noDevice = {0},
                       .timeoutSeconds = 1,
                       .readings = {{"01", "0"}, {"09", "0"}},
                       .decoded = [](auto& reply) { return text(reply.u8(1) == 2 ? 1 : 0); }}},
          .orders = orders()};
}

}  // namespace orb::test
