#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "orb-platform/orb-platform.h"

// The program defines the platform classes itself, as a test of the library does, and is linked
// with the platform library all the same: everybody gets the program's.

GDBusSystemInventoryClient::GDBusSystemInventoryClient() {}
GDBusSystemInventoryClient::~GDBusSystemInventoryClient() {}
std::vector<unsigned int> GDBusSystemInventoryClient::GetModuleLocations() { return {7, 9}; }

namespace {
unsigned int selectedLocation = 0;
}

GDBusModuleResourcesClient::GDBusModuleResourcesClient() {}
GDBusModuleResourcesClient::~GDBusModuleResourcesClient() {}
void GDBusModuleResourcesClient::SetupDeviceAddress(unsigned int location) {
  selectedLocation = location;
}
Record GDBusModuleResourcesClient::GetSystemRecord(std::string name) { return Record(4, name); }
std::vector<PcieBar> GDBusModuleResourcesClient::GetBars() { return std::vector<PcieBar>(2); }
std::string GDBusModuleResourcesClient::GetI2CBus() { return "i2c-99"; }
std::string GDBusModuleResourcesClient::GetSPIDev() { return "spidev99"; }

I2CDev::I2CDev(const std::string&) {}
I2CDev::~I2CDev() {}
int I2CDev::open(int address) { return address; }
int I2CDev::read(unsigned char*, int count, const unsigned char*, int) { return count; }
int I2CDev::write(const unsigned char*, int count) { return -count; }

namespace orb::test {
namespace {

TEST(PlatformClasses, MayBeDefinedByTheProgram) {
  EXPECT_THAT(GDBusSystemInventoryClient().GetModuleLocations(), ::testing::ElementsAre(7, 9));
  GDBusModuleResourcesClient client;
  client.SetupDeviceAddress(5);
  EXPECT_EQ(selectedLocation, 5);
  EXPECT_EQ(client.GetBars().size(), 2);
  EXPECT_EQ(client.GetI2CBus(), "i2c-99");
  EXPECT_EQ(client.GetSPIDev(), "spidev99");
  I2CDev device("/dev/i2c-1");
  EXPECT_EQ(device.open(3), 3);
  EXPECT_EQ(device.read(nullptr, 2, nullptr, 0), 2);
  EXPECT_EQ(device.write(nullptr, 2), -2);
}

TEST(PlatformClasses, MayBeDefinedInPart) {
  const Record record = GDBusModuleResourcesClient().GetSystemRecord("name");
  EXPECT_EQ(record.GetRecordType(), 4);  // Record is the platform library's.
  EXPECT_EQ(record.GetRecordData(), "name");
}

}  // namespace
}  // namespace orb::test
