#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "orb-platform/orb-platform.h"

// Linked with the reference library and run with the maker's in its place.
namespace orb::test {
namespace {

TEST(MakersLibrary, TakesThePlaceOfTheReferenceLibrary) {
  EXPECT_THAT(GDBusSystemInventoryClient().GetModuleLocations(), ::testing::ElementsAre(1));
  GDBusModuleResourcesClient client;
  EXPECT_EQ(client.GetSystemRecord("HardwareSetId").GetRecordType(), 0);
  client.SetupDeviceAddress(1);
  const Record record = client.GetSystemRecord("HardwareSetId");
  EXPECT_EQ(record.GetRecordType(), 1);
  EXPECT_EQ(record.GetRecordData(), "47205318-001");
  EXPECT_EQ(client.GetBars().size(), 1);
  EXPECT_EQ(client.GetI2CBus(), "i2c-12");
  EXPECT_EQ(client.GetSPIDev(), "spidev0.1");
  I2CDev device("/dev/i2c-12");
  EXPECT_EQ(device.open(0x20), -1);
  EXPECT_EQ(device.open(0x21), 0);
  unsigned char byte = 0;
  constexpr unsigned char kRegister[] = {6};
  EXPECT_EQ(device.read(&byte, 1, kRegister, 1), 1);
  EXPECT_EQ(byte, 6);
  EXPECT_EQ(device.write(&byte, 1), 1);
}

}  // namespace
}  // namespace orb::test
