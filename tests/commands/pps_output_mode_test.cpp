#include <string>
#include <utility>
#include <vector>

#include "support/receiver_fixture.h"

namespace orb::test {
namespace {

/// Records how the mode is set and read.
class ModeTakenDown : public StampedDriver {
 public:
  unsigned int gpsOrb1ppsOutputMode(unsigned int mode, unsigned int alignSource) override {
    calls.emplace_back(mode, alignSource);
    return 77;
  }
  unsigned int gpsOrbGet1ppsOutputMode(unsigned int& mode, unsigned int& alignSource) override {
    calls.emplace_back(mode, alignSource);
    alignSource = 1;
    return 78;
  }
  std::vector<std::pair<unsigned int, unsigned int>> calls;
};

TEST(PpsOutputMode, IsWhatTheFrontEndsCallThroughVirtualMembers) {
  ModeTakenDown driver;
  EXPECT_EQ(driver.setTimeReference("UTC"), 77u);
  EXPECT_EQ(driver.setTimeReference("GPS"), 77u);
  EXPECT_EQ(driver.configTimePulse(9, 200, true), 77u);
  std::string reference;
  EXPECT_EQ(driver.getTimeReference(reference), 78u);
  EXPECT_EQ(reference, "UTC");
  EXPECT_EQ(driver.calls,
            (std::vector<std::pair<unsigned int, unsigned int>>{{2, 1}, {2, 1}, {200, 0}, {0, 0}}));
}

}  // namespace
}  // namespace orb::test
