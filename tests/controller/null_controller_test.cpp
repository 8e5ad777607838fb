#include "orb-gnss/null_controller.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "orb-gnss/control_interface.h"
#include "support/receiver_test.h"

namespace {

// Clients see the null controller through the interface.
class NullController : public orb::test::ReceiverTest {
 protected:
  const std::shared_ptr<ORBControlInterface> controller_ = std::make_shared<orbController_null>();
};

TEST_F(NullController, AnswersZeroToOperationsWithoutArguments) {
  EXPECT_EQ(controller_->save(), 0u);
  EXPECT_EQ(controller_->load(), 0u);
  EXPECT_EQ(controller_->resetFactoryDefaults(), 0u);
  EXPECT_EQ(controller_->resetorbitekDefaults(), 0u);
  EXPECT_EQ(controller_->setDefaultConfiguration(), 0u);
  EXPECT_EQ(controller_->setApplicationDefaults(), 0u);
  EXPECT_EQ(controller_->turnOff(), 0u);
  EXPECT_EQ(controller_->turnOn(), 0u);
  EXPECT_EQ(controller_->getResetInfo(), 0u);
  EXPECT_EQ(controller_->setSurveyAuto(), 0u);
  EXPECT_EQ(controller_->setSurveyDynamic(), 0u);
  EXPECT_EQ(controller_->setUtcStandardAuto(), 0u);
  EXPECT_EQ(controller_->configureSBAS(), 0u);
  EXPECT_EQ(controller_->configureProtocols(), 0u);
  EXPECT_EQ(controller_->configExtendedPowerManagment(), 0u);
}

TEST_F(NullController, AcceptsEverySetting) {
  EXPECT_EQ(controller_->restart(true), 0u);
  EXPECT_EQ(controller_->forceRestart(1), 0u);
  EXPECT_EQ(controller_->setAntennaDelay(-7), 0u);
  EXPECT_EQ(controller_->setAntennaType("active"), 0u);
  EXPECT_EQ(controller_->setGnssSystem(0x7F, true), 0u);
  EXPECT_EQ(controller_->setGnssSystem(0x7F), 0u);
  EXPECT_EQ(controller_->setJammingDetection(true), 0u);
  EXPECT_EQ(controller_->setSurveyMode("no such mode"), 0u);
  EXPECT_EQ(controller_->setSurveyStatic(1, 2, 3, 4), 0u);
  EXPECT_EQ(controller_->setSurveyAuto(0, -1.0F), 0u);
  EXPECT_EQ(controller_->setMinCNo(-128), 0u);
  EXPECT_EQ(controller_->setElevationLimit(255), 0u);
  EXPECT_EQ(controller_->setDynamicModel(255), 0u);
  EXPECT_EQ(controller_->setDynamicModel(255, 255), 0u);
  EXPECT_EQ(controller_->setFixMode(255), 0u);
  EXPECT_EQ(controller_->setTimeReference(""), 0u);
  EXPECT_EQ(controller_->setRxMode(""), 0u);
  EXPECT_EQ(controller_->setUtsStandardTime(-1), 0u);
  EXPECT_EQ(controller_->configureOrbPolling(1), 0u);
  EXPECT_EQ(controller_->configureNmeaPolling(1), 0u);
  EXPECT_EQ(controller_->configurNmeaPollingPartial(1), 0u);
  EXPECT_EQ(controller_->getUtcGrid(1), 0u);
  EXPECT_EQ(controller_->configTimePulse(1, 2, true), 0u);
  EXPECT_EQ(controller_->programGroupDelayCal(-1), 0u);
}

TEST_F(NullController, LeavesTextsAsTheCallerSetThem) {
  std::string text = "before";
  EXPECT_EQ(controller_->getInfo(text), 0u);
  EXPECT_EQ(controller_->getAntennaType(text), 0u);
  EXPECT_EQ(controller_->getNavsolution("key", text), 0u);
  EXPECT_EQ(controller_->getSurveyMode(text), 0u);
  EXPECT_EQ(controller_->getSatelliteInfo(text), 0u);
  EXPECT_EQ(controller_->getTimeReference(text), 0u);
  EXPECT_EQ(controller_->getRxMode(text), 0u);
  EXPECT_EQ(text, "before");
}

TEST_F(NullController, LeavesNumbersAsTheCallerSetThem) {
  int delay = -5;
  EXPECT_EQ(controller_->getAntennaDelay(delay), 0u);
  EXPECT_EQ(delay, -5);

  unsigned short mask = 0xABCD;
  EXPECT_EQ(controller_->getGnssSystem(mask), 0u);
  EXPECT_EQ(mask, 0xABCD);

  signed char minimum = -3;
  EXPECT_EQ(controller_->getMinCNo(minimum), 0u);
  EXPECT_EQ(minimum, -3);

  unsigned char first = 0x11;
  unsigned char second = 0x22;
  EXPECT_EQ(controller_->getNofSatellitesInNavSol(first), 0u);
  EXPECT_EQ(controller_->getElevationLimit(first), 0u);
  EXPECT_EQ(controller_->getDynamicModel(first, second), 0u);
  EXPECT_EQ(first, 0x11);
  EXPECT_EQ(second, 0x22);
}

TEST_F(NullController, LeavesFlagsAsTheCallerSetThem) {
  bool flag = true;
  EXPECT_EQ(controller_->isOn(flag), 0u);
  EXPECT_EQ(controller_->getJammingDetection(flag), 0u);
  EXPECT_TRUE(flag);
}

TEST_F(NullController, LeavesTheSurveyAsTheCallerSetIt) {
  unsigned char mode = 9;
  double position[4] = {1.5, 2.5, 3.5, 4.5};
  unsigned int length = 77;
  float stdDev = 6.5F;
  EXPECT_EQ(controller_->getSurveyInfo(mode, position[0], position[1], position[2], position[3],
                                       length, stdDev),
            0u);
  EXPECT_EQ(mode, 9);
  EXPECT_EQ(position[0], 1.5);
  EXPECT_EQ(position[1], 2.5);
  EXPECT_EQ(position[2], 3.5);
  EXPECT_EQ(position[3], 4.5);
  EXPECT_EQ(length, 77u);
  EXPECT_EQ(stdDev, 6.5F);
}

TEST_F(NullController, DetectsNoChip) {
  EXPECT_EQ(controller_->gpsObtChipDetect(), 0u);
  EXPECT_EQ(controller_->gpsObtChipDetect("/dev/tty_gps"), 0u);
}

TEST_F(NullController, RefusesEveryMessageType) {
  EXPECT_EQ(controller_->gpsObtSetMsgType("NMEA"), 1u);
  EXPECT_EQ(controller_->gpsObtSetMsgType("BINARY"), 1u);
  EXPECT_EQ(controller_->gpsObtSetMsgType("NO"), 1u);
  EXPECT_EQ(controller_->gpsObtSetMsgType(""), 1u);
}

TEST_F(NullController, HasNoTimeStamp) { EXPECT_THROW(controller_->timeStamp(), std::logic_error); }

// There is a receiver on the line, so that a byte would be seen.
TEST_F(NullController, SendsNothingAndWritesNothing) {
  const std::string error = orb::test::standardErrorOf([this] {
    const std::string output = orb::test::standardOutputOf([this] {
      controller_->Init();
      controller_->restart(true);
      controller_->gpsObtChipDetect();
      controller_->resetorbitekDefaults();
      std::string info;
      controller_->getInfo(info);
    });
    EXPECT_EQ(output, "");
  });
  EXPECT_EQ(error, "");
  EXPECT_EQ(sent(), "");
  EXPECT_EQ(orb::test::contentOf(files_.errorLog), "(no file)");
}

}  // namespace
