#include "commands/operation_fixture.h"

namespace orb::test {
namespace {

/// What configureNmeaPolling() comes to. Its result never tells.
class NmeaPolling : public OperationTest {
 protected:
  Observed poll() { return observe(calling(&Driver::configureNmeaPolling, 5)); }

  const Setting& interval_ = setting("NmeaExtendedConfigure");
  Observed expected_{.line = {"open", interval_.sends.packet + " " + interval_.reads.packet}};
};

TEST_F(NmeaPolling, IsSetInTheReceiver) {
  connectReceiver();
  EXPECT_EQ(poll(), expected_);
  EXPECT_EQ(gps_.receiver.state().nmeaIntervals[0], 5);
}

TEST_F(NmeaPolling, HidesAnIntervalThatIsNotKept) {
  onPacket(interval_.reads.packet).answer(hex(interval_.otherReply.packet));
  EXPECT_EQ(poll(), expected_);
}

TEST_F(NmeaPolling, HidesThatNoReplyComes) {
  letWaitsEnd();
  expected_.standardError = kTimedOut;
  expected_.errorLog = noReply(interval_.reads.description);
  EXPECT_EQ(poll(), expected_);
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_F(NmeaPolling, HidesThatTheDeviceIsMissing) {
  unplug();
  EXPECT_EQ(poll(), (Observed{.standardError = times(2, kNoDevice),
                              .errorLog = notSent(interval_.sends.description) +
                                          notSent(interval_.reads.description)}));
}

}  // namespace
}  // namespace orb::test
