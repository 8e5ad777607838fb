#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "facade_parts.h"
#include "orb-gnss/controller.h"
#include "recording_controller.h"
#include "support/device_files.h"
#include "support/fake_board.h"

namespace {

/// A facade whose controller records what reaches it.
class Forwarding : public testing::Test {
 protected:
  Forwarding() { orb::test::controllerOf(facade_) = controller_; }

  /// That one operation with these arguments was called, and its result came back.
  void expectForwarded(unsigned int result, const std::string& call) {
    EXPECT_EQ(controller_->calls, std::vector<std::string>{call});
    EXPECT_EQ(result, controller_->lastResult) << call;
    controller_->calls.clear();
  }

  // Declared in this order: the facade's construction needs files and board.
  orb::test::DeviceFiles files_;
  orb::test::FakeBoard board_;
  orbController facade_;
  const std::shared_ptr<orb::test::RecordingController> controller_ =
      std::make_shared<orb::test::RecordingController>();
};

TEST_F(Forwarding, PassesInitOn) {
  facade_.Init();
  EXPECT_EQ(controller_->calls, std::vector<std::string>{"Init()"});
}

TEST_F(Forwarding, PassesOperationsWithoutArgumentsOn) {
  expectForwarded(facade_.save(), "save()");
  expectForwarded(facade_.load(), "load()");
  expectForwarded(facade_.resetFactoryDefaults(), "resetFactoryDefaults()");
  expectForwarded(facade_.resetorbitekDefaults(), "resetorbitekDefaults()");
  expectForwarded(facade_.setDefaultConfiguration(), "setDefaultConfiguration()");
  expectForwarded(facade_.setApplicationDefaults(), "setApplicationDefaults()");
  expectForwarded(facade_.turnOff(), "turnOff()");
  expectForwarded(facade_.turnOn(), "turnOn()");
  expectForwarded(facade_.getResetInfo(), "getResetInfo()");
  expectForwarded(facade_.setSurveyAuto(), "setSurveyAuto()");
  expectForwarded(facade_.setSurveyDynamic(), "setSurveyDynamic()");
  expectForwarded(facade_.setUtcStandardAuto(), "setUtcStandardAuto()");
  expectForwarded(facade_.configureSBAS(), "configureSBAS()");
  expectForwarded(facade_.configureProtocols(), "configureProtocols()");
  expectForwarded(facade_.configExtendedPowerManagment(), "configExtendedPowerManagment()");
  expectForwarded(facade_.gpsObtChipDetect(), "gpsObtChipDetect()");
}

TEST_F(Forwarding, PassesNumbersOn) {
  expectForwarded(facade_.forceRestart(0x0103), "forceRestart(259)");
  expectForwarded(facade_.setAntennaDelay(-2147483647), "setAntennaDelay(-2147483647)");
  expectForwarded(facade_.setGnssSystem(0xFFFE), "setGnssSystem(65534)");
  expectForwarded(facade_.setSurveyStatic(1.5, -2.5, 3.5, 4.5),
                  "setSurveyStatic(1.5, -2.5, 3.5, 4.5)");
  expectForwarded(facade_.setSurveyAuto(4294967295U, 0.25F), "setSurveyAuto(4294967295, 0.25)");
  expectForwarded(facade_.setMinCNo(-128), "setMinCNo(-128)");
  expectForwarded(facade_.setElevationLimit(255), "setElevationLimit(255)");
  expectForwarded(facade_.setDynamicModel(200), "setDynamicModel(200)");
  expectForwarded(facade_.setDynamicModel(201, 202), "setDynamicModel(201, 202)");
  expectForwarded(facade_.setFixMode(203), "setFixMode(203)");
  expectForwarded(facade_.setUtsStandardTime(-1), "setUtsStandardTime(-1)");
  expectForwarded(facade_.configureOrbPolling(204), "configureOrbPolling(204)");
  expectForwarded(facade_.configureNmeaPolling(205), "configureNmeaPolling(205)");
  expectForwarded(facade_.configurNmeaPollingPartial(206), "configurNmeaPollingPartial(206)");
  expectForwarded(facade_.getUtcGrid(65535), "getUtcGrid(65535)");
  expectForwarded(facade_.programGroupDelayCal(-9), "programGroupDelayCal(-9)");
}

TEST_F(Forwarding, PassesFlagsOn) {
  for (const bool flag : {false, true}) {
    const std::string text = flag ? "true" : "false";
    expectForwarded(facade_.restart(flag), "restart(" + text + ")");
    expectForwarded(facade_.setJammingDetection(flag), "setJammingDetection(" + text + ")");
    expectForwarded(facade_.setGnssSystem(3, flag), "setGnssSystem(3, " + text + ")");
    expectForwarded(facade_.configTimePulse(1, 2, flag), "configTimePulse(1, 2, " + text + ")");
  }
}

TEST_F(Forwarding, PassesACopyOfTextsOn) {
  const std::string text = "any text, unchecked";
  expectForwarded(facade_.setAntennaType(text), "setAntennaType(any text, unchecked)");
  expectForwarded(facade_.setSurveyMode(text), "setSurveyMode(any text, unchecked)");
  expectForwarded(facade_.setTimeReference(text), "setTimeReference(any text, unchecked)");
  expectForwarded(facade_.setRxMode(text), "setRxMode(any text, unchecked)");
  expectForwarded(facade_.gpsObtChipDetect(text), "gpsObtChipDetect(any text, unchecked)");
  expectForwarded(facade_.gpsObtSetMsgType(text), "gpsObtSetMsgType(any text, unchecked)");
  expectForwarded(facade_.gpsObtSetMsgType(""), "gpsObtSetMsgType()");
}

TEST_F(Forwarding, HandsTheCallersTextsOver) {
  std::string text = "in";
  expectForwarded(facade_.getInfo(text), "getInfo(in)");
  expectForwarded(facade_.getAntennaType(text), "getAntennaType(in!)");
  expectForwarded(facade_.getNavsolution("key", text), "getNavsolution(key, in!!)");
  expectForwarded(facade_.getSurveyMode(text), "getSurveyMode(in!!!)");
  expectForwarded(facade_.getSatelliteInfo(text), "getSatelliteInfo(in!!!!)");
  expectForwarded(facade_.getTimeReference(text), "getTimeReference(in!!!!!)");
  expectForwarded(facade_.getRxMode(text), "getRxMode(in!!!!!!)");
  EXPECT_EQ(text, "in!!!!!!!");
}

TEST_F(Forwarding, HandsTheCallersNumbersOver) {
  int delay = -5;
  expectForwarded(facade_.getAntennaDelay(delay), "getAntennaDelay(-5)");
  EXPECT_EQ(delay, -4);

  unsigned short mask = 0xFFFE;
  expectForwarded(facade_.getGnssSystem(mask), "getGnssSystem(65534)");
  EXPECT_EQ(mask, 0xFFFF);

  signed char minimum = -3;
  expectForwarded(facade_.getMinCNo(minimum), "getMinCNo(-3)");
  EXPECT_EQ(minimum, -2);

  unsigned char first = 10;
  unsigned char second = 20;
  expectForwarded(facade_.getNofSatellitesInNavSol(first), "getNofSatellitesInNavSol(10)");
  expectForwarded(facade_.getElevationLimit(first), "getElevationLimit(11)");
  expectForwarded(facade_.getDynamicModel(first, second), "getDynamicModel(12, 20)");
  EXPECT_EQ(first, 13);
  EXPECT_EQ(second, 21);
}

TEST_F(Forwarding, HandsTheCallersFlagsOver) {
  bool flag = true;
  expectForwarded(facade_.isOn(flag), "isOn(true)");
  expectForwarded(facade_.getJammingDetection(flag), "getJammingDetection(false)");
  EXPECT_TRUE(flag);
}

TEST_F(Forwarding, HandsTheCallersSurveyOver) {
  unsigned char mode = 1;
  double latitude = 10.5;
  double longitude = 20.5;
  double altitude = 30.5;
  double reserved = 40.5;
  unsigned int length = 50;
  float stdDev = 60.5F;
  expectForwarded(
      facade_.getSurveyInfo(mode, latitude, longitude, altitude, reserved, length, stdDev),
      "getSurveyInfo(1, 10.5, 20.5, 30.5, 40.5, 50, 60.5)");
  EXPECT_EQ(mode, 2);
  EXPECT_EQ(latitude, 11.5);
  EXPECT_EQ(longitude, 21.5);
  EXPECT_EQ(altitude, 31.5);
  EXPECT_EQ(reserved, 41.5);
  EXPECT_EQ(length, 51u);
  EXPECT_EQ(stdDev, 61.5F);
}

TEST_F(Forwarding, HandsTheControllersTimeStampBack) {
  EXPECT_EQ(facade_.timeStamp(), "stamp of the controller");
  EXPECT_EQ(controller_->calls, std::vector<std::string>{"timeStamp()"});
}

}  // namespace
