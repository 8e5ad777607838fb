#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <string>

#include "orb-sim/path_map.h"

namespace orb::test {
namespace {

constexpr const char* kMappedTty = "/nonexistent-orb-sim/tty";
constexpr int kReadLimit = 5000;  // milliseconds

/// A pty whose far end is told of every flush, before the bytes that follow.
class MappedTerminal : public testing::Test {
 protected:
  MappedTerminal() {
    grantpt(farEnd_);
    unlockpt(farEnd_);
    const int packetMode = 1;
    ioctl(farEnd_, TIOCPKT, &packetMode);
    std::array<char, 64> name{};
    ptsname_r(farEnd_, name.data(), name.size());
    sim::mapPath(kMappedTty, name.data());
    tty_ = open(kMappedTty, O_RDWR | O_NOCTTY | O_NONBLOCK);
    termios settings;
    tcgetattr(tty_, &settings);
    cfmakeraw(&settings);
    tcsetattr(tty_, TCSANOW, &settings);
    farEndReads();  // what the settings changed
  }
  ~MappedTerminal() override {
    close(tty_);
    close(farEnd_);
    sim::clearPathMap();
  }

  /// What the far end gets next: the flags of a change, or 0 and the bytes written.
  std::string farEndReads() const {
    pollfd source{farEnd_, POLLIN | POLLPRI, 0};
    if (poll(&source, 1, kReadLimit) != 1) {
      return "nothing";
    }
    std::array<char, 64> bytes{};
    const ssize_t length = read(farEnd_, bytes.data(), bytes.size());
    return length < 0 ? "an error" : std::string(bytes.data(), static_cast<std::size_t>(length));
  }

  void waitForInput(int count) const {
    for (int waiting = 0; waiting < count;) {
      ioctl(tty_, FIONREAD, &waiting);
    }
  }

  const int farEnd_ = posix_openpt(O_RDWR | O_NOCTTY);
  int tty_ = -1;
};

const std::string kInputFlushed(1, TIOCPKT_FLUSHREAD);
const std::string kWritten("\0written", 8);

TEST_F(MappedTerminal, KeepsWhatWasWrittenWhenBothDirectionsAreFlushed) {
  const int duplicate = dup(tty_);
  const std::function<int()> flushes[] = {[&] { return tcflush(tty_, TCIOFLUSH); },
                                          [&] { return tcflush(duplicate, TCIOFLUSH); },
                                          [&] { return ioctl(tty_, TCFLSH, TCIOFLUSH); }};
  for (const auto& flush : flushes) {
    ASSERT_EQ(write(tty_, "written", 7), 7);
    ASSERT_EQ(flush(), 0);
    EXPECT_EQ(farEndReads(), kInputFlushed);
    EXPECT_EQ(farEndReads(), kWritten);
  }
  close(duplicate);
}

TEST_F(MappedTerminal, KeepsWhatWasWrittenWhenOutputIsFlushed) {
  ASSERT_EQ(write(tty_, "written", 7), 7);
  ASSERT_EQ(tcflush(tty_, TCOFLUSH), 0);
  EXPECT_EQ(farEndReads(), kWritten);
}

TEST_F(MappedTerminal, LosesInputThatIsFlushed) {
  for (const int queue : {TCIFLUSH, TCIOFLUSH}) {
    ASSERT_EQ(write(farEnd_, "input", 5), 5);
    waitForInput(5);
    ASSERT_EQ(tcflush(tty_, queue), 0);
    char byte;
    EXPECT_EQ(read(tty_, &byte, 1), -1);
    EXPECT_EQ(errno, EAGAIN);
  }
}

TEST_F(MappedTerminal, RefusesAnUnknownQueue) {
  EXPECT_EQ(tcflush(tty_, 77), -1);
  EXPECT_EQ(errno, EINVAL);
}

TEST_F(MappedTerminal, IsTheOnlyTerminalThatKeepsWhatWasWritten) {
  sim::clearPathMap();
  ASSERT_EQ(tcflush(tty_, TCOFLUSH), 0);
  EXPECT_EQ(farEndReads(), std::string(1, TIOCPKT_FLUSHWRITE));
}

}  // namespace
}  // namespace orb::test
