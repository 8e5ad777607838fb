#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>

#include "device/echo_device.h"
#include "line_client.h"
#include "orb-sim/pty_line.h"
#include "processor_time.h"
#include "rate_query.h"
#include "support/temporary_folder.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr std::uint8_t kDrop = EchoDevice::kDrop;

std::ptrdiff_t openTerminals() {
  std::ptrdiff_t count = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code ignored;
    const std::string target = fs::read_symlink(entry.path(), ignored).string();
    count += target.rfind("/dev/pts", 0) == 0 || target.rfind("/dev/ptmx", 0) == 0 ? 1 : 0;
  }
  return count;
}

/// A line that hangs up, with a link to its tty.
class HangUp : public testing::Test {
 protected:
  TemporaryFolder folder_;
  const fs::path link_ = folder_.path() / "tty_gps";
  EchoDevice device_;
  sim::PtyLine line_{device_, link_};
};

TEST_F(HangUp, IsSeenByTheClientAfterTheLastByte) {
  TtyClient client(line_.path());
  EXPECT_EQ(client.echoOf({1, 2, kDrop}), (sim::Bytes{1, 2, kDrop}));
  ASSERT_TRUE(client.waitForHangUp());
  std::uint8_t byte = 0;
  EXPECT_EQ(::read(client.descriptor(), &byte, 1), 0);
  EXPECT_EQ(::write(client.descriptor(), &byte, 1), -1);
  EXPECT_EQ(errno, EIO);
}

TEST_F(HangUp, LeavesAnotherTtyInThePlaceOfTheOldOne) {
  const std::string before = line_.path();
  TtyClient client(before);
  TtyClient other(link_.string());
  device_.drop();
  ASSERT_TRUE(client.waitForHangUp());
  ASSERT_TRUE(other.waitForHangUp());
  EXPECT_NE(line_.path(), before);
  EXPECT_EQ(fs::read_symlink(link_), line_.path());
  TtyClient next(link_.string());
  EXPECT_EQ(next.echoOf(hex("01 02")), hex("01 02"));
}

TEST_F(HangUp, CanComeAgainAndAgainWithoutLeavingAnythingBehind) {
  const std::ptrdiff_t before = openTerminals();
  for (std::uint8_t i = 0; i < 30; ++i) {
    TtyClient client(link_.string());
    ASSERT_EQ(client.echoOf({i}), sim::Bytes{i});
    ASSERT_EQ(client.echoOf({kDrop}), sim::Bytes{kDrop});
    ASSERT_TRUE(client.waitForHangUp());
  }
  // The line lets the old tty go only after its clients have seen the hang-up.
  const auto limit = sim::PtyLine::Clock::now() + 10s;
  while (openTerminals() != before && sim::PtyLine::Clock::now() < limit) {
    std::this_thread::sleep_for(1ms);
  }
  EXPECT_EQ(openTerminals(), before);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), {}), 1) << "the link alone";
}

TEST_F(HangUp, NeverLeavesTheLinkMissing) {
  std::atomic<bool> over{false};
  std::atomic<int> failures{0};
  std::thread watcher([&] {
    while (!over) {
      std::error_code error;
      failures += fs::read_symlink(link_, error).empty() ? 1 : 0;
    }
  });
  for (int i = 0; i < 20; ++i) {
    TtyClient client(link_.string());
    device_.drop();
    EXPECT_TRUE(client.waitForHangUp());
  }
  over = true;
  watcher.join();
  EXPECT_EQ(failures, 0);
}

TEST_F(HangUp, LeavesNothingOfTheOldLineForTheNextClient) {
  TtyClient client(line_.path());
  line_.send(sim::Bytes(100000, 0x11));  // more than a tty holds
  client.write({kDrop});
  ASSERT_TRUE(client.waitForHangUp());
  TtyClient next(link_.string());
  EXPECT_EQ(next.echoOf(hex("22")), hex("22"));
}

TEST_F(HangUp, DoesNotMakeTheLineSpinWhileClientsKeepTheOldTty) {
  TtyClient client(line_.path());
  device_.drop();
  ASSERT_TRUE(client.waitForHangUp());
  EXPECT_FALSE(spins());
}

}  // namespace
}  // namespace orb::test
