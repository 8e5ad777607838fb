#include "orb-gnss/null_controller.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "operations/interface_operations.h"
#include "support/receiver_fixture.h"

namespace orb::test {
namespace {

// Clients see the null controller through the interface. There is a receiver on the line, so that a
// byte would be seen.
class NullController : public ReceiverTest, public testing::WithParamInterface<Arguments> {
 protected:
  const std::shared_ptr<ORBControlInterface> controller_ = std::make_shared<orbController_null>();
};

TEST_P(NullController, AnswersZeroAndDoesNothing) {
  const auto callAll = [&] {
    visitOperations<ORBControlInterface>([&](const std::string& name, auto member) {
      if (name == "timeStamp") {
        return;
      }
      const SampleCall call = callWithSamples(*controller_, member, GetParam());
      EXPECT_EQ(call.result, name == "Init" ? "" : name == "gpsObtSetMsgType" ? "1" : "0") << name;
      EXPECT_EQ(call.after, call.before) << name;
    });
  };
  EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(standardOutputOf(callAll), ""); }), "");
  EXPECT_EQ(sent(), "");
  EXPECT_EQ(contentOf(files_.errorLog), "(no file)");
}

INSTANTIATE_TEST_SUITE_P(Each, NullController,
                         testing::Values(Arguments::kLowest, Arguments::kHighest));

TEST_F(NullController, RefusesEveryMessageType) {
  for (const char* type : {"NMEA", "BINARY", "NO", ""}) {
    EXPECT_EQ(controller_->gpsObtSetMsgType(type), 1u) << type;
  }
}

TEST_F(NullController, HasNoTimeStamp) { EXPECT_THROW(controller_->timeStamp(), std::logic_error); }

}  // namespace
}  // namespace orb::test
