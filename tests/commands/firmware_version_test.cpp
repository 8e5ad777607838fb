#include <iostream>
#include <string>

#include "commands/operation_fixture.h"
#include "support/captured_stream.h"

namespace orb::test {
namespace {

class FirmwareVersion : public OperationTest {
 protected:
  const Query& row_ = query("GetInfo");
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
  EXPECT_EQ(observe(row_.call).outputs, row_.reply.answer.outputs);
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

}  // namespace
}  // namespace orb::test
