#include "operations/operation.h"

namespace orb::test {

namespace {

Drawn drawFactoryDefaults(Numbers& /*numbers*/) {
  return {calling(&Driver::gpsObtSetFactoryDefaults), 0,
          [](sim::State& state) { static_cast<sim::Settings&>(state) = {}; }};
}

}  // namespace

// Whether a receiver is there is the output. Only the acknowledgement of the query tells that one
// is.
Family detection() {
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
          .orders = {{.name = "SetFactoryDefaults",
                      .call = calling(&Driver::gpsObtSetFactoryDefaults),
                      .sends = {"A0 A1 00 02 04 01 05 0D 0A",
                                "04 00: Set system to factory default values "},
                      .draw = drawFactoryDefaults}}};
}

}  // namespace orb::test
