#include "line/stable_link.h"

#include <gtest/gtest.h>

#include <fstream>
#include <system_error>

#include "orb-sim/pty_line.h"
#include "orb-sim/receiver.h"
#include "support/temporary_folder.h"

namespace orb::test {
namespace {

namespace fs = std::filesystem;

class StableLinkTo : public testing::Test {
 protected:
  TemporaryFolder folder_;
  const fs::path link_ = folder_.path() / "tty_gps";
};

TEST_F(StableLinkTo, ThePtyLivesAsLongAsTheLine) {
  sim::Receiver receiver;
  {
    const sim::PtyLine line(receiver, link_);
    EXPECT_EQ(fs::read_symlink(link_), line.path());
  }
  EXPECT_TRUE(fs::is_empty(folder_.path()));
}

TEST_F(StableLinkTo, SomethingElseIsReplaced) {
  fs::create_symlink("/nonexistent", link_);
  const sim::StableLink link(link_, "/dev/null");
  EXPECT_EQ(fs::read_symlink(link_), "/dev/null");
}

TEST_F(StableLinkTo, NoWhereIsMadeInThePlaceOfAFileOrInAFolderThatIsMissing) {
  std::ofstream(link_) << "precious";
  EXPECT_THROW(sim::StableLink(link_, "/dev/null"), fs::filesystem_error);
  EXPECT_TRUE(fs::is_regular_file(link_));
  EXPECT_THROW(sim::StableLink(folder_ / "missing/link", "/dev/null"), std::system_error);
}

TEST_F(StableLinkTo, AnothersTargetIsLeftAlone) {
  {
    const sim::StableLink link(link_, "/dev/null");
    fs::remove(link_);
    fs::create_symlink("/dev/zero", link_);
  }
  EXPECT_EQ(fs::read_symlink(link_), "/dev/zero");
}

}  // namespace
}  // namespace orb::test
