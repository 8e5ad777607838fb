#include "commands/operation_fixture.h"

namespace orb::test {
namespace {

class OutputAndPower : public OperationTest {};

TEST_F(OutputAndPower, OutputTypeIsNoneForAnyTextButTwo) {
  gps_.script.on(0x0900).answer(hex("A0 A1 00 02 83 09 8A 0D 0A"));
  for (const char* type : {"", "no", "nmea", "binary", "NMEA ", "BINAR", "1", "2"}) {
    EXPECT_EQ(observe(calling(&Driver::gpsObtSetMsgType, type)),
              (Observed{.line = {"open", "A0 A1 00 03 09 00 00 09 0D 0A"}}))
        << type;
  }
}

TEST_F(OutputAndPower, OutputTypeTakesTheAcknowledgementOfAnyMessage) {
  const Query& row = query("SetMsgTypeToNmea");
  EXPECT_EQ(observeAnswered(row, "0C", row.call), (Observed{.line = {"open", row.sends.packet}}));
}

TEST_F(OutputAndPower, PollingSendsTheQueryAloneForAnyValue) {
  const Query& row = query("ConfigureOrbPolling");
  constexpr unsigned char kValues[] = {0, 1, 255};
  for (const unsigned char value : kValues) {
    EXPECT_EQ(observeAnswered(row, "01", calling(&Driver::configureOrbPolling, value)),
              (Observed{.line = {"open", row.sends.packet}}));
  }
}

TEST_F(OutputAndPower, RateReadBackFailsWhenTheDeviceGoesMeanwhile) {
  const Setting& row = setting("SetCfgRateToTwenty");
  when("wait 800 ms", 1, [&] { unplug(); });
  EXPECT_EQ(observe(row.call), (Observed{.result = 9,
                                         .standardOutput = "applyUpdateRate:20 nUpdateRate:0\n",
                                         .standardError = kNoDevice,
                                         .errorLog = notSent(row.reads.description),
                                         .line = {"open", row.sends.packet, "wait 800 ms"}}));
}

}  // namespace
}  // namespace orb::test
