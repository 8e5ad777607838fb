#include "base/checked.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace orb::test {
namespace {

TEST(Checked, ReturnsWhatTheCallHasReturned) {
  EXPECT_EQ(checked(0, "call"), 0);
  EXPECT_EQ(checked(7, "call"), 7);
}

TEST(Checked, ThrowsWhatAFailedCallHasLeft) {
  try {
    checked(chdir("/no/such"), "a folder");
    FAIL() << "nothing was thrown";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    EXPECT_EQ(std::string(error.what()).rfind("a folder: ", 0), 0U);
  }
}

}  // namespace
}  // namespace orb::test
