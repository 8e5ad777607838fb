// The facade on the reference platform library, whose inventory is on a D-Bus daemon.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "orb-gnss/controller.h"
#include "orb-gnss/hardware_discovery.h"
#include "support/private_bus.h"
#include "support/receiver_fixture.h"

namespace orb::test {
namespace {

constexpr const char* kCarrierModule = R"(
[[module]]
location = 1
i2c-bus = "i2c-none"
spi-device = "spidev1.0"
bars = [
  { index = 0, address = 0xf0000000, size = 0x1000 },
  { index = 1, address = 0xf0001000, size = 0x1000 },
]
[module.records]
HardwareSetId = "47205318-001"
PcieEndpoints = "2"
)";

constexpr const char* kOtherModule = R"(
[[module]]
location = 1
[module.records]
HardwareSetId = "47205318-002"
)";

class ControllerOnBus : public ReceiverTest {
 protected:
  PrivateBus bus_{files_.folder};
};

TEST_F(ControllerOnBus, FindsTheModuleAndTheReceiver) {
  const InventoryService inventory(bus_, kCarrierModule);
  EXPECT_EQ(standardErrorOf([] {
              EXPECT_EQ(standardOutputOf([] {
                          orbController facade;
                          EXPECT_TRUE(facade.IsOrbitek());
                          std::string info;
                          EXPECT_EQ(facade.getInfo(info), 0u);
                          EXPECT_EQ(info,
                                    "KernelVersion 1.0.12: ODMVersion 1.2.0: Revision 2024.3.15");
                          facade.saveorbitekChipInfo();
                        }),
                        "reset skipp!\n"
                        "nOrbRevision 2024315\n"
                        "nOrbRevision 2024315\n");
            }),
            "");
  EXPECT_EQ(contentOf(files_.identityFile),
            "orbitek_Chip=OK\n"
            "orbitek_Info=Revision 2024.3.15\n");
}

TEST_F(ControllerOnBus, SendsNothingToAnotherModuleOrToNone) {
  for (const char* modules : {kOtherModule, ""}) {
    const InventoryService inventory(bus_, modules);
    orbController facade;
    EXPECT_FALSE(facade.IsOrbitek());
    EXPECT_EQ(sent(), "");
  }
}

// One line on standard error says so; its text is the platform library's.
TEST_F(ControllerOnBus, SendsNothingWhenThereIsNoInventoryService) {
  standardErrorOf([] {
    orbController facade;
    EXPECT_FALSE(facade.IsOrbitek());
  });
  EXPECT_EQ(sent(), "");
}

TEST_F(ControllerOnBus, SwitchesNoAntennaOnABusThatIsNotThere) {
  const InventoryService inventory(bus_, kCarrierModule);
  orbController facade;
  EXPECT_EQ(facade.setAntennaPower("ON"), 0);
  EXPECT_EQ(facade.setAntennaPower("standby"), 0);
}

TEST_F(ControllerOnBus, DiscoversTheModulesResources) {
  const InventoryService inventory(bus_, kCarrierModule);
  EXPECT_TRUE(checkAddress(1));
  EXPECT_FALSE(checkAddress(2));
  EXPECT_EQ(getModuleHardwareID(1), "47205318-001");
  EXPECT_EQ(getModuleHardwareID(2), "");
  EXPECT_EQ(getSolutionI2C(1), "i2c-none");
  EXPECT_EQ(getSolutionSpiDev(1), "spidev1.0");
  EXPECT_TRUE(checkForEndpointInEEPROM(1));
  EXPECT_FALSE(checkForEndpointInEEPROM(2));
}

}  // namespace
}  // namespace orb::test
