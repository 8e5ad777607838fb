#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "facade_parts.h"
#include "operations/interface_operations.h"
#include "operations/recording.h"
#include "orb-gnss/controller.h"
#include "support/device_files.h"
#include "support/fake_board.h"

namespace orb::test {
namespace {

/// A facade whose controller records what reaches it.
class Forwarding : public testing::TestWithParam<Arguments> {
 protected:
  Forwarding() {
    controller_->resultOf = [](std::size_t n) { return 0x5000 + static_cast<unsigned int>(n); };
    controllerOf(facade_) = controller_;
  }

  // Declared in this order: the facade's construction needs files and board.
  DeviceFiles files_;
  FakeBoard board_;
  orbController facade_;
  const std::shared_ptr<RecordingController> controller_ = std::make_shared<RecordingController>();
};

TEST_P(Forwarding, HandsArgumentsOverAndResultsBack) {
  std::size_t calls = 0;
  visitOperations<ORBControlInterface>([&](const std::string& name, auto member) {
    const SampleCall call =
        callWithSamples(static_cast<ORBControlInterface&>(facade_), member, GetParam());
    ASSERT_EQ(controller_->calls.size(), ++calls) << name;
    EXPECT_EQ(controller_->calls.back(), name + "(" + call.before + ")");
    EXPECT_EQ(call.after, controller_->left) << name;
    EXPECT_EQ(call.result, name == "Init"        ? ""
                           : name == "timeStamp" ? "\"stamp of the controller\""
                                                 : text(controller_->resultOf(calls)))
        << name;
  });
  EXPECT_EQ(calls, 60u);
}

INSTANTIATE_TEST_SUITE_P(Each, Forwarding,
                         testing::Values(Arguments::kLowest, Arguments::kHighest));

}  // namespace
}  // namespace orb::test
