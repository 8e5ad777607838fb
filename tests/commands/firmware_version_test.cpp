#include <iostream>
#include <string>

#include "commands/operation_test.h"
#include "support/captured_stream.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

class FirmwareVersion : public OperationTest {
 protected:
  Observed readAnswer(const std::string& reply) {
    onPacket(row_.sends.packet).answer(hex(reply));
    return observe(row_.call);
  }

  const Query& row_ = query("GetInfo");
  const Observed expected_{.outputs = row_.reply.answer.outputs,
                           .standardOutput = row_.reply.answer.printed,
                           .line = {"open", row_.sends.packet}};
};

TEST_F(FirmwareVersion, IsPrintedInDecimalAndFlushedWhateverTheStreamIsSetTo) {
  onPacket(row_.sends.packet).answer(hex(row_.reply.packet));
  CapturedStream output(std::cout);
  std::cout << std::hex << std::showbase;
  row_.call(driver_);
  EXPECT_EQ(output.text(), row_.reply.answer.printed);
  EXPECT_EQ(output.flushedText(), row_.reply.answer.printed);
}

TEST_F(FirmwareVersion, IsThatOfTheLastQuery) {
  connectReceiver();
  EXPECT_EQ(observe(row_.call), expected_);
  gps_.receiver.change([](sim::State& state) {
    state.identity = {{2, 3, 4}, {5, 6, 7}, 25, 12, 31, "other"};
  });
  EXPECT_EQ(observe(row_.call).outputs,
            "\"beforeKernelVersion 2.3.4: ODMVersion 5.6.7: Revision 2025.12.31\", "
            "\"2.3.4\", \"5.6.7\", \"2025.12.31\", 20251231");
}

TEST_F(FirmwareVersion, DoesNotStayInTheDriverWhenReadAsThreeTextsOrAsAnExtension) {
  connectReceiver();
  for (const char* name : {"GetLabelledFwVersion", "GetFwVersionString"}) {
    EXPECT_EQ(observe(query(name).call).result, 0u);
    EXPECT_EQ(driver_.kernelVersion + driver_.odmVersion + driver_.revision, "") << name;
    EXPECT_EQ(driver_.revisionNumber, 0) << name;
  }
}

// The reply on its way.

TEST_F(FirmwareVersion, MayComeByteByByte) {
  onPacket(row_.sends.packet)
      .answer(hex("A0 A1 00 02 83 02 81 0D 0A " + row_.reply.packet))
      .inPieces(1, 1ms);
  EXPECT_EQ(observe(row_.call), expected_);
}

TEST_F(FirmwareVersion, MayComeBetweenOtherBytes) {
  EXPECT_EQ(readAnswer("24 47 50 A1 A0 00 0D 0A " + row_.reply.packet + " 24 47"), expected_);
}

TEST_F(FirmwareVersion, IsTheNewerOfTwoReplies) {
  EXPECT_EQ(readAnswer("A0 A1 00 0E 80 00 00 00 00 00 00 00 00 00 00 05 01 02 86 0D 0A " +
                       row_.reply.packet),
            expected_);
}

}  // namespace
}  // namespace orb::test
