#include "orb-gnss/control_interface.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <type_traits>
#include <vector>

#include "operations/interface_operations.h"
#include "orb-gnss/controller.h"
#include "orb-gnss/module_driver.h"
#include "orb-gnss/null_controller.h"
#include "support/device_files.h"
#include "support/fake_board.h"
#include "support/virtual_slot.h"

namespace orb::test {
namespace {

template <typename Class>
class ControllerInterfaceOf : public testing::Test {};

using Classes =
    testing::Types<ORBControlInterface, orbController, orbController_QN4470T01, orbController_null>;
TYPED_TEST_SUITE(ControllerInterfaceOf, Classes);

TYPED_TEST(ControllerInterfaceOf, HasItsOperationsInOrder) {
  std::vector<std::size_t> slots;
  visitOperations<TypeParam>(
      [&](const char* /*name*/, auto member) { slots.push_back(slotOf(member)); });
  std::vector<std::size_t> expected(60);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(slots, expected);
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
  const DeviceFiles files;
  const FakeBoard board;
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
}  // namespace orb::test
