#include <string>

#include "commands/operation_fixture.h"

namespace orb::test {
namespace {

class NavigationData : public OperationTest {
 protected:
  const Query& report_ = query("GetMsgUserNavDataBinary");
  const Query& count_ = query("GetNofSatellitesInNavSol");
};

TEST_F(NavigationData, IsNotTheAnswerToTheQuery) {
  letWaitsEnd();
  onPacket(report_.sends.packet).answer(hex("A0 A1 00 03 64 98 01 FD 0D 0A"));
  EXPECT_EQ(observe(report_.call), (Observed{.result = 4,
                                             .outputs = report_.untouched,
                                             .standardError = kTimedOut,
                                             .errorLog = noReply(report_.sends.description),
                                             .line = {"open", report_.sends.packet}}));
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_F(NavigationData, IsTakenAfterTheAnswerToTheQuery) {
  onPacket(report_.sends.packet)
      .answer(
          hex("A0 A1 00 02 83 64 E7 0D 0A A0 A1 00 03 64 98 01 FD 0D 0A " + report_.reply.packet));
  EXPECT_EQ(observe(report_.call).outputs, report_.reply.answer.outputs);
}

TEST_F(NavigationData, ComesFromAReceiverWhoseOutputIsBinary) {
  connectReceiver();
  gps_.receiver.change([](auto& state) { state.outputType = sim::OutputType::Binary; });
  const Observed observed = observe(report_.call);
  EXPECT_EQ(observed.result, 0u);
  EXPECT_NE(observed.outputs.find("\nlatitude=48.371234\n"), std::string::npos);
  EXPECT_EQ(observe(count_.call).outputs, "9");
}

TEST_F(NavigationData, DoesNotComeFromAReceiverWhoseOutputIsNmea) {
  connectReceiver();
  letWaitsEnd();
  EXPECT_EQ(observe(report_.call).result, 4u);
  EXPECT_EQ(observe(count_.call).result, 8u);
  EXPECT_EQ(waitsEnded(), 2);
}

TEST_F(NavigationData, HasNoInformationOnSingleSatellites) {
  EXPECT_EQ(observe(reading(&Driver::getSatelliteInfo, "before")),
            Observed{.outputs = "\"before\""});
}

}  // namespace
}  // namespace orb::test
