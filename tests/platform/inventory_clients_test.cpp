#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include "orb-platform/orb-platform.h"
#include "private_bus.h"
#include "temporary_folder.h"

namespace {

using orb::test::InventoryService;
using orb::test::PrivateBus;
using orb::test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kTwoModules[] = R"(
[[module]]
location = 4294967295
spi-device = "spidev1.0"
[module.records]
Name = "Zeitempfänger 時計 🛰"
"a name with blanks" = { type = 7, data = "" }

[[module]]
location = 1
i2c-bus = "i2c-3"
bars = [
  { index = 0, address = 0xf0000000, size = 0x1000 },
  { index = 4294967295, address = 0x7fffffffffffffff, size = 0x7fffffffffffffff },
]
[module.records]
HardwareSetId = "47205318-001"
)";

constexpr unsigned int kEmptyLocation = 2;

class InventoryClients : public ::testing::Test {
 protected:
  void SetUp() override { ::testing::internal::CaptureStderr(); }
  void TearDown() override { EXPECT_EQ(::testing::internal::GetCapturedStderr(), ""); }

  static GDBusModuleResourcesClient& clientFor(GDBusModuleResourcesClient& client,
                                               unsigned int location) {
    client.SetupDeviceAddress(location);
    return client;
  }

  TemporaryFolder folder_;
  PrivateBus bus_{folder_.path()};
  InventoryService inventory_{bus_, kTwoModules};
  GDBusModuleResourcesClient client_;
};

TEST_F(InventoryClients, ListTheLocationsInAscendingOrder) {
  GDBusSystemInventoryClient client;
  EXPECT_THAT(client.GetModuleLocations(), ElementsAre(1, 4294967295));
  EXPECT_THAT(client.GetModuleLocations(), ElementsAre(1, 4294967295));
}

TEST_F(InventoryClients, ReadARecord) {
  const Record record = clientFor(client_, 1).GetSystemRecord("HardwareSetId");
  EXPECT_EQ(record.GetRecordType(), 1);
  EXPECT_EQ(record.GetRecordData(), "47205318-001");
}

TEST_F(InventoryClients, ReadARecordBeyondAscii) {
  const Record record = clientFor(client_, 4294967295).GetSystemRecord("Name");
  EXPECT_EQ(record.GetRecordType(), 1);
  EXPECT_EQ(record.GetRecordData(), "Zeitempfänger 時計 🛰");
}

TEST_F(InventoryClients, ReadARecordOfAnotherTypeWithoutData) {
  const Record record = clientFor(client_, 4294967295).GetSystemRecord("a name with blanks");
  EXPECT_EQ(record.GetRecordType(), 7);
  EXPECT_EQ(record.GetRecordData(), "");
}

TEST_F(InventoryClients, GiveTypeZeroForAMissingRecord) {
  for (const std::string& name :
       {std::string("PcieEndpoints"), std::string(), std::string("hardwaresetid"),
        std::string("HardwareSetId\0", 14)}) {
    const Record record = clientFor(client_, 1).GetSystemRecord(name);
    EXPECT_EQ(record.GetRecordType(), 0) << name;
    EXPECT_EQ(record.GetRecordData(), "") << name;
  }
}

TEST_F(InventoryClients, ReadTheBars) {
  const std::vector<PcieBar> bars = clientFor(client_, 1).GetBars();
  ASSERT_EQ(bars.size(), 2);
  EXPECT_EQ(bars[0].index, 0);
  EXPECT_EQ(bars[0].address, 0xf0000000);
  EXPECT_EQ(bars[0].size, 0x1000);
  EXPECT_EQ(bars[1].index, 4294967295);
  EXPECT_EQ(bars[1].address, 0x7fffffffffffffff);
  EXPECT_EQ(bars[1].size, 0x7fffffffffffffff);
}

TEST_F(InventoryClients, ReadTheDevicesOfTheSelectedLocation) {
  EXPECT_EQ(clientFor(client_, 1).GetI2CBus(), "i2c-3");
  EXPECT_EQ(client_.GetSPIDev(), "");
  EXPECT_EQ(clientFor(client_, 4294967295).GetI2CBus(), "");
  EXPECT_EQ(client_.GetSPIDev(), "spidev1.0");
  EXPECT_THAT(client_.GetBars(), IsEmpty());
}

TEST_F(InventoryClients, GetNothingFromALocationWithoutAModule) {
  const Record record = clientFor(client_, kEmptyLocation).GetSystemRecord("HardwareSetId");
  EXPECT_EQ(record.GetRecordType(), 0);
  EXPECT_EQ(record.GetRecordData(), "");
  EXPECT_THAT(client_.GetBars(), IsEmpty());
  EXPECT_EQ(client_.GetI2CBus(), "");
  EXPECT_EQ(client_.GetSPIDev(), "");
}

TEST_F(InventoryClients, SpeakToTheServiceThatCameBack) {
  EXPECT_EQ(clientFor(client_, 1).GetI2CBus(), "i2c-3");
  EXPECT_EQ(inventory_.stop(), 0);
  const InventoryService restarted(bus_, "[[module]]\nlocation = 1\ni2c-bus = \"i2c-9\"\n");
  EXPECT_EQ(client_.GetI2CBus(), "i2c-9");
}

TEST(SystemInventoryClient, FindsNoModulesInAnEmptyInventory) {
  const TemporaryFolder folder;
  const PrivateBus bus(folder.path());
  const InventoryService inventory(bus, "");
  EXPECT_THAT(GDBusSystemInventoryClient().GetModuleLocations(), IsEmpty());
}

TEST(Record, KeepsItsTwoValuesWhenCopied) {
  const Record original(-3, std::string("a\0b", 3));
  Record copy(0, "");
  copy = original;
  EXPECT_EQ(copy.GetRecordType(), -3);
  EXPECT_EQ(copy.GetRecordData(), std::string("a\0b", 3));
}

TEST(PcieBar, IsAllZeroAtFirst) {
  const PcieBar bar;
  EXPECT_EQ(bar.index, 0);
  EXPECT_EQ(bar.address, 0);
  EXPECT_EQ(bar.size, 0);
}

}  // namespace
