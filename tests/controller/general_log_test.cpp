#include <gtest/gtest.h>

#include "orb-gnss/controller.h"
#include "support/device_files.h"
#include "support/fake_board.h"

/// /var/log/orbset.log: it is opened before anything is looked for, whatever is found then.
namespace orb::test {
namespace {

class GeneralLog : public testing::Test {
 protected:
  void expectOpenWithAFacade() {
    const orbController facade;
    EXPECT_EQ(descriptorsOf(files_.generalLog), 1);
    EXPECT_FALSE(facade.IsOrbitek());
  }

  DeviceFiles files_;
  CarrierBoard board_;
};

TEST_F(GeneralLog, IsOpenedWhenNoModuleIsFitted) {
  board_.modules.clear();
  expectOpenWithAFacade();
}

TEST_F(GeneralLog, IsOpenedWhenAnotherModuleIsFitted) {
  board_.modules[1].records["HardwareSetId"] = "47205318-002";
  expectOpenWithAFacade();
}

TEST_F(GeneralLog, IsOpenedBeforeADiscoveryThatThrows) {
  board_.failingCall = "inventory client";
  EXPECT_THROW(orbController(), BoardFailure);
  EXPECT_EQ(contentOf(files_.generalLog), "");
  EXPECT_EQ(descriptorsOf(files_.generalLog), 0);
}

}  // namespace
}  // namespace orb::test
