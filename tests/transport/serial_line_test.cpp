// The channel as it runs on a device: on a tty found by its fixed path, with nothing replaced but
// the clock.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "orb-sim/path_map.h"
#include "support/captured_output.h"
#include "support/channel_values.h"
#include "support/files.h"
#include "support/pty.h"
#include "support/temporary_folder.h"
#include "support/wall_clock.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

class SerialLine : public ::testing::Test {
 protected:
  SerialLine() { mapDefaultDevice(pty_.path()); }
  ~SerialLine() override { sim::clearPathMap(); }

  void mapDefaultDevice(const std::string& path) { sim::mapPath("/dev/tty_gps", path); }
  std::string standardError() const { return standardError_.text(); }
  std::string takeStandardError() { return standardError_.take(); }

  Pty pty_;
  WallClock clock_;

 private:
  CapturedOutput standardError_{STDERR_FILENO};
};

TEST_F(SerialLine, CarriesAnExchange) {
  orbIO channel;
  ORBMessage query(0x6502, 2, nullptr);
  EXPECT_EQ(channel.SendMessage(&query), 0);
  EXPECT_EQ(pty_.takeWritten(9), (Bytes{0xA0, 0xA1, 0x00, 0x02, 0x65, 0x02, 0x67, 0x0D, 0x0A}));
  pty_.feed(kAck + kPulseWidth);
  EXPECT_EQ(receive(channel, 0x6580), kPulseWidth);
  EXPECT_EQ(standardError(), "");
}

TEST_F(SerialLine, IsNotOpenedWhereItIsMissingNorSetUpWhereItIsAFileOrAFifo) {
  const TemporaryFolder folder;
  mapDefaultDevice(folder / "missing");
  EXPECT_FALSE(orbIO().isOpen());
  EXPECT_EQ(takeStandardError(), kCouldNotOpen);

  fill(folder / "file", "content");
  mapDefaultDevice(folder / "file");
  EXPECT_FALSE(orbIO().isOpen());
  EXPECT_EQ(takeStandardError(), "Can't get gps_tty settings\n");
  EXPECT_EQ(contentOf(folder / "file"), "content");

  ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
  mapDefaultDevice(folder / "fifo");
  EXPECT_FALSE(orbIO().isOpen());
  EXPECT_EQ(takeStandardError(), "Can't get gps_tty settings\n");
}

TEST_F(SerialLine, CarriesAReplyThatComesInPieces) {
  orbIO channel;
  std::thread farEnd([this] {
    for (const unsigned char byte : kPulseWidth) {
      std::this_thread::sleep_for(1ms);
      pty_.send({byte});
    }
  });
  EXPECT_EQ(receive(channel, 0x6580), kPulseWidth);
  farEnd.join();
  EXPECT_EQ(standardError(), "");
}

std::atomic<int> signalsHandled{0};

TEST_F(SerialLine, IsWaitedForThroughSignals) {
  struct sigaction action {};
  action.sa_handler = [](int) { ++signalsHandled; };  // without SA_RESTART
  struct sigaction previous {};
  ASSERT_EQ(sigaction(SIGUSR1, &action, &previous), 0);

  orbIO channel;
  const pthread_t waiting = pthread_self();
  std::thread farEnd([this, waiting] {
    for (int i = 0; i < 50; ++i) {
      std::this_thread::sleep_for(1ms);
      pthread_kill(waiting, SIGUSR1);
    }
    pty_.send(kAck);
  });
  EXPECT_EQ(receive(channel, 0x8300), kAck);
  farEnd.join();
  EXPECT_GT(signalsHandled, 0);
  EXPECT_EQ(standardError(), "");
  sigaction(SIGUSR1, &previous, nullptr);
}

TEST_F(SerialLine, IsClosedWithTheChannel) {
  const int before = descriptorsOf(pty_.path());
  {
    const orbIO channel;
    EXPECT_EQ(descriptorsOf(pty_.path()), before + 1);
  }
  EXPECT_EQ(descriptorsOf(pty_.path()), before);
}

}  // namespace
}  // namespace orb::test
