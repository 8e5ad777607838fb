#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <functional>

#include "orb-platform/orb-platform.h"
#include "support/private_bus.h"
#include "support/temporary_folder.h"

namespace orb::test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
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

using Values = std::pair<int, std::string>;

class InventoryClients : public ::testing::Test {
 protected:
  void SetUp() override { ::testing::internal::CaptureStderr(); }
  void TearDown() override { EXPECT_EQ(::testing::internal::GetCapturedStderr(), ""); }

  GDBusModuleResourcesClient& clientAt(unsigned int location) {
    client_.SetupDeviceAddress(location);
    return client_;
  }

  void reload(const char* toml) {
    fill(bus_.folder() / "inventory.toml", toml);
    ::kill(inventory_.process().pid(), SIGHUP);
  }

  static void waitFor(const std::function<bool()>& condition) {
    for (int looks = 0; !condition() && looks < 3000; ++looks) {
      ::usleep(10'000);
    }
  }

  Values recordAt(unsigned int location, const std::string& name) {
    const Record record = clientAt(location).GetSystemRecord(name);
    return {record.GetRecordType(), record.GetRecordData()};
  }

  TemporaryFolder folder_;
  PrivateBus bus_{folder_.path()};
  InventoryService inventory_{bus_, kTwoModules};
  GDBusModuleResourcesClient client_;
};

TEST_F(InventoryClients, SeeTheFileAsItWasWhenTheServiceLastReadItWell) {
  GDBusSystemInventoryClient client;
  reload("[[module]]\nlocation = 7\n");
  waitFor([&] { return client.GetModuleLocations().size() == 1; });
  EXPECT_THAT(client.GetModuleLocations(), ElementsAre(7));
  reload("module = 8\n");
  waitFor([&] { return inventory_.process().output().ends_with("as it was\n"); });
  EXPECT_THAT(inventory_.process().output(),
              EndsWith("orb-inventoryd: the inventory stays as it was\n"));
  EXPECT_THAT(client.GetModuleLocations(), ElementsAre(7));
}

TEST_F(InventoryClients, SeeAFileThatIsReadAfterOneThatMemoryWasTooShortFor) {
  if (ORB_IS_SANITIZED) {
    GTEST_SKIP() << "sanitizers end a program that has no memory left";
  }
  const pid_t service = inventory_.process().pid();
  rlimit limit{};
  ASSERT_EQ(::prlimit(service, RLIMIT_AS, nullptr, &limit), 0);
  const rlimit none{0, limit.rlim_max};
  ASSERT_EQ(::prlimit(service, RLIMIT_AS, &none, nullptr), 0);
  reload("[[module]]\nlocation = 7\n");
  waitFor([&] { return inventory_.process().output().ends_with("as it was\n"); });
  EXPECT_EQ(inventory_.process().output(),
            "orb-inventoryd: std::bad_alloc\norb-inventoryd: the inventory stays as it was\n");
  ASSERT_EQ(::prlimit(service, RLIMIT_AS, &limit, nullptr), 0);
  reload("[[module]]\nlocation = 8\n");
  GDBusSystemInventoryClient client;
  waitFor([&] { return client.GetModuleLocations().size() == 1; });
  EXPECT_THAT(client.GetModuleLocations(), ElementsAre(8));
}

TEST_F(InventoryClients, ListTheLocationsInAscendingOrder) {
  GDBusSystemInventoryClient client;
  EXPECT_THAT(client.GetModuleLocations(), ElementsAre(1, 4294967295));
  EXPECT_THAT(client.GetModuleLocations(), ElementsAre(1, 4294967295));
}

TEST_F(InventoryClients, ReadRecords) {
  EXPECT_EQ(recordAt(1, "HardwareSetId"), Values(1, "47205318-001"));
  EXPECT_EQ(recordAt(4294967295, "Name"), Values(1, "Zeitempfänger 時計 🛰"));
  EXPECT_EQ(recordAt(4294967295, "a name with blanks"), Values(7, ""));
}

TEST_F(InventoryClients, ReturnTypeZeroForAMissingRecord) {
  for (const std::string& name :
       {std::string("PcieEndpoints"), std::string(), std::string("hardwaresetid"),
        std::string("HardwareSetId\0", 14)}) {
    EXPECT_EQ(recordAt(1, name), Values(0, "")) << name;
  }
}

TEST_F(InventoryClients, ReadTheBars) {
  const std::vector<PcieBar> bars = clientAt(1).GetBars();
  ASSERT_EQ(bars.size(), 2);
  EXPECT_EQ(bars[0].index, 0);
  EXPECT_EQ(bars[0].address, 0xf0000000);
  EXPECT_EQ(bars[0].size, 0x1000);
  EXPECT_EQ(bars[1].index, 4294967295);
  EXPECT_EQ(bars[1].address, 0x7fffffffffffffff);
  EXPECT_EQ(bars[1].size, 0x7fffffffffffffff);
}

TEST_F(InventoryClients, ReadTheDevicesOfTheSelectedLocation) {
  EXPECT_EQ(clientAt(1).GetI2CBus(), "i2c-3");
  EXPECT_EQ(client_.GetSPIDev(), "");
  EXPECT_EQ(clientAt(4294967295).GetI2CBus(), "");
  EXPECT_EQ(client_.GetSPIDev(), "spidev1.0");
  EXPECT_THAT(client_.GetBars(), IsEmpty());
}

TEST_F(InventoryClients, FindNothingAtALocationWithoutAModule) {
  EXPECT_EQ(recordAt(kEmptyLocation, "HardwareSetId"), Values(0, ""));
  EXPECT_THAT(client_.GetBars(), IsEmpty());
  EXPECT_EQ(client_.GetI2CBus(), "");
  EXPECT_EQ(client_.GetSPIDev(), "");
}

TEST_F(InventoryClients, SpeakToTheServiceThatCameBack) {
  EXPECT_EQ(clientAt(1).GetI2CBus(), "i2c-3");
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
}  // namespace orb::test
