#include <gtest/gtest.h>

#include "orb-gnss/controller.h"
#include "support/fake_board.h"
#include "support/receiver_test.h"

/// /var/log/orbset.log: it is opened before anything is looked for, whatever is found then.
namespace {

using orb::test::contentOf;

class GeneralLog : public orb::test::NoReceiverTest {
 protected:
  void expectOpenWithAFacade() {
    const orbController facade;
    EXPECT_EQ(orb::test::descriptorsOf(files_.generalLog), 1);
    EXPECT_FALSE(facade.IsOrbitek());
  }

  orb::test::CarrierBoard board_;
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
  EXPECT_THROW(orbController(), orb::test::BoardFailure);
  EXPECT_EQ(contentOf(files_.generalLog), "");
  EXPECT_EQ(orb::test::descriptorsOf(files_.generalLog), 0);
}

}  // namespace
