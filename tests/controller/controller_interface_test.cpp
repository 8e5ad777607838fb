#include "orb-gnss/control_interface.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <type_traits>
#include <vector>

#include "orb-gnss/controller.h"
#include "orb-gnss/module_driver.h"
#include "orb-gnss/null_controller.h"
#include "support/device_files.h"
#include "support/fake_board.h"
#include "support/virtual_slot.h"

namespace {

using orb::test::slotOf;

using U8 = unsigned char;
using S8 = signed char;
using U16 = unsigned short;
using Text = std::string;

/// A member function type, to choose one of several overloads.
template <typename Class, typename Result, typename... Arguments>
using Operation = Result (Class::*)(Arguments...);

/// The slots of a class's operations, in the order that clients rely on.
template <typename C>
std::vector<std::size_t> slotsOfOperations() {
  using R = unsigned int;
  return {
      slotOf<Operation<C, void>>(&C::Init),
      slotOf<Operation<C, R>>(&C::save),
      slotOf<Operation<C, R>>(&C::load),
      slotOf<Operation<C, R>>(&C::resetFactoryDefaults),
      slotOf<Operation<C, R>>(&C::resetorbitekDefaults),
      slotOf<Operation<C, R, bool>>(&C::restart),
      slotOf<Operation<C, R, U16>>(&C::forceRestart),
      slotOf<Operation<C, R>>(&C::setDefaultConfiguration),
      slotOf<Operation<C, R>>(&C::setApplicationDefaults),
      slotOf<Operation<C, R>>(&C::turnOff),
      slotOf<Operation<C, R>>(&C::turnOn),
      slotOf<Operation<C, R, bool&>>(&C::isOn),
      slotOf<Operation<C, R>>(&C::getResetInfo),
      slotOf<Operation<C, R, Text&>>(&C::getInfo),
      slotOf<Operation<C, R, int>>(&C::setAntennaDelay),
      slotOf<Operation<C, R, int&>>(&C::getAntennaDelay),
      slotOf<Operation<C, R, Text>>(&C::setAntennaType),
      slotOf<Operation<C, R, Text&>>(&C::getAntennaType),
      slotOf<Operation<C, R, U16, bool>>(&C::setGnssSystem),
      slotOf<Operation<C, R, U16>>(&C::setGnssSystem),
      slotOf<Operation<C, R, U16&>>(&C::getGnssSystem),
      slotOf<Operation<C, R, bool>>(&C::setJammingDetection),
      slotOf<Operation<C, R, bool&>>(&C::getJammingDetection),
      slotOf<Operation<C, R, Text, Text&>>(&C::getNavsolution),
      slotOf<Operation<C, R, Text>>(&C::setSurveyMode),
      slotOf<Operation<C, R, Text&>>(&C::getSurveyMode),
      slotOf<Operation<C, R, double, double, double, double>>(&C::setSurveyStatic),
      slotOf<Operation<C, R, unsigned int, float>>(&C::setSurveyAuto),
      slotOf<Operation<C, R>>(&C::setSurveyAuto),
      slotOf<Operation<C, R>>(&C::setSurveyDynamic),
      slotOf<Operation<C, R, U8&, double&, double&, double&, double&, unsigned int&, float&>>(
          &C::getSurveyInfo),
      slotOf<Operation<C, R, Text&>>(&C::getSatelliteInfo),
      slotOf<Operation<C, R, U8&>>(&C::getNofSatellitesInNavSol),
      slotOf<Operation<C, R, S8>>(&C::setMinCNo),
      slotOf<Operation<C, R, S8&>>(&C::getMinCNo),
      slotOf<Operation<C, R, U8>>(&C::setElevationLimit),
      slotOf<Operation<C, R, U8&>>(&C::getElevationLimit),
      slotOf<Operation<C, R, U8>>(&C::setDynamicModel),
      slotOf<Operation<C, R, U8, U8>>(&C::setDynamicModel),
      slotOf<Operation<C, R, U8&, U8&>>(&C::getDynamicModel),
      slotOf<Operation<C, R, U8>>(&C::setFixMode),
      slotOf<Operation<C, R, Text>>(&C::setTimeReference),
      slotOf<Operation<C, R, Text&>>(&C::getTimeReference),
      slotOf<Operation<C, R, Text>>(&C::setRxMode),
      slotOf<Operation<C, R, Text&>>(&C::getRxMode),
      slotOf<Operation<C, R>>(&C::setUtcStandardAuto),
      slotOf<Operation<C, R, S8>>(&C::setUtsStandardTime),
      slotOf<Operation<C, R, U8>>(&C::configureOrbPolling),
      slotOf<Operation<C, R>>(&C::configureSBAS),
      slotOf<Operation<C, R, U8>>(&C::configureNmeaPolling),
      slotOf<Operation<C, R, U8>>(&C::configurNmeaPollingPartial),
      slotOf<Operation<C, R>>(&C::configureProtocols),
      slotOf<Operation<C, R>>(&C::configExtendedPowerManagment),
      slotOf<Operation<C, R, U16>>(&C::getUtcGrid),
      slotOf<Operation<C, R, U16, U8, bool>>(&C::configTimePulse),
      slotOf<Operation<C, Text>>(&C::timeStamp),
      slotOf<Operation<C, R, int>>(&C::programGroupDelayCal),
      slotOf<Operation<C, R>>(&C::gpsObtChipDetect),
      slotOf<Operation<C, R, Text>>(&C::gpsObtChipDetect),
      slotOf<Operation<C, R, Text>>(&C::gpsObtSetMsgType),
  };
}

/// 0 to 59.
std::vector<std::size_t> sixtySlots() {
  std::vector<std::size_t> slots(60);
  std::iota(slots.begin(), slots.end(), 0);
  return slots;
}

TEST(ControllerInterface, HasItsOperationsInOrder) {
  EXPECT_EQ(slotsOfOperations<ORBControlInterface>(), sixtySlots());
}

TEST(ControllerInterface, HasItsOperationsInOrderInTheFacade) {
  EXPECT_EQ(slotsOfOperations<orbController>(), sixtySlots());
}

TEST(ControllerInterface, HasItsOperationsInOrderInTheModuleDriver) {
  EXPECT_EQ(slotsOfOperations<orbController_QN4470T01>(), sixtySlots());
}

TEST(ControllerInterface, HasItsOperationsInOrderInTheNullController) {
  EXPECT_EQ(slotsOfOperations<orbController_null>(), sixtySlots());
}

TEST(ControllerInterface, HasNothingButItsOperations) {
  struct Next : ORBControlInterface {
    virtual void next() = 0;
  };
  EXPECT_EQ(slotOf(&Next::next), 60u);
  EXPECT_FALSE(std::has_virtual_destructor_v<ORBControlInterface>);
  EXPECT_TRUE(std::is_abstract_v<ORBControlInterface>);
  EXPECT_EQ(sizeof(ORBControlInterface), sizeof(void*));
}

// A virtual destructor takes two slots.
TEST(ControllerInterface, ComesBeforeWhatTheControllersAdd) {
  struct NextOfNull : orbController_null {
    virtual void next() = 0;
  };
  struct NextOfFacade : orbController {
    virtual void next() = 0;
  };
  EXPECT_EQ(slotOf(&NextOfNull::next), 62u);
  EXPECT_EQ(slotOf(&NextOfFacade::next), 62u);
  EXPECT_EQ(slotOf(&orbController_QN4470T01::gpsObtSetFactoryDefaults), 62u);
}

TEST(ControllerInterface, IsTheFirstPartOfEachController) {
  const orb::test::DeviceFiles files;
  const orb::test::FakeBoard board;
  const orbController facade;
  const orbController_QN4470T01 driver;
  EXPECT_EQ(static_cast<const void*>(&facade), static_cast<const ORBControlInterface*>(&facade));
  EXPECT_EQ(static_cast<const void*>(&driver), static_cast<const ORBControlInterface*>(&driver));
  EXPECT_EQ(sizeof(orbController_null), sizeof(ORBControlInterface));
}

// The tables as the linker has laid them out.

using Slot = const void*;

Slot const* tableOf(const ORBControlInterface& controller) {
  return *reinterpret_cast<Slot const* const*>(&controller);
}

TEST(ControllerInterface, IsReachedThroughABareSlot) {
  orbController_null nullController;
  const auto setMsgType = reinterpret_cast<unsigned int (*)(ORBControlInterface*, std::string)>(
      const_cast<void*>(tableOf(nullController)[59]));
  EXPECT_EQ(setMsgType(&nullController, "NMEA"), 1u);
  const auto chipDetect = reinterpret_cast<unsigned int (*)(ORBControlInterface*)>(
      const_cast<void*>(tableOf(nullController)[57]));
  EXPECT_EQ(chipDetect(&nullController), 0u);
}

}  // namespace
