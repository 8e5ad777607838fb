// The channel as it runs on a device: on a tty found by its fixed path, with nothing replaced but
// the clock.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "channel_values.h"
#include "orb-sim/path_map.h"
#include "support/captured_output.h"
#include "support/pty.h"
#include "support/temporary_folder.h"
#include "support/wall_clock.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

namespace fs = std::filesystem;

class SerialLine : public ::testing::Test {
 protected:
  SerialLine() { mapDefaultDevice(pty_.path()); }
  ~SerialLine() override { orb::sim::clearPathMap(); }

  void mapDefaultDevice(const std::string& path) { orb::sim::mapPath("/dev/tty_gps", path); }
  std::string standardError() const { return standardError_.text(); }

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
  pty_.feed(join({kAck, kPulseWidth}));
  EXPECT_EQ(receive(channel, 0x6580), kPulseWidth);
  EXPECT_EQ(standardError(), "");
}

TEST_F(SerialLine, IsNotOpenedWhereItIsMissing) {
  const TemporaryFolder folder;
  mapDefaultDevice(folder / "tty_gps");
  const orbIO channel;
  EXPECT_FALSE(channel.isOpen());
  EXPECT_EQ(standardError(), kCouldNotOpen);
}

TEST_F(SerialLine, IsNotSetUpWhereItIsAFile) {
  const TemporaryFolder folder;
  std::ofstream(folder / "tty_gps") << "content";
  mapDefaultDevice(folder / "tty_gps");
  const orbIO channel;
  EXPECT_FALSE(channel.isOpen());
  EXPECT_EQ(standardError(), "Can't get gps_tty settings\n");
  EXPECT_EQ(fs::file_size(folder / "tty_gps"), 7u);
}

TEST_F(SerialLine, IsNotSetUpWhereItIsAFifo) {
  const TemporaryFolder folder;
  ASSERT_EQ(mkfifo((folder / "tty_gps").c_str(), 0600), 0);
  mapDefaultDevice(folder / "tty_gps");
  const orbIO channel;
  EXPECT_FALSE(channel.isOpen());
  EXPECT_EQ(standardError(), "Can't get gps_tty settings\n");
}

TEST_F(SerialLine, GivesAReplyThatComesInPieces) {
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

std::chrono::microseconds processorTime() {
  rusage usage{};
  getrusage(RUSAGE_THREAD, &usage);
  const auto toTime = [](const timeval& value) {
    return std::chrono::seconds(value.tv_sec) + std::chrono::microseconds(value.tv_usec);
  };
  return toTime(usage.ru_utime) + toTime(usage.ru_stime);
}

TEST_F(SerialLine, IsWaitedForWithLittleProcessorTime) {
  static constexpr auto kSilence = 400ms;
  orbIO channel;
  std::thread farEnd([this] {
    std::this_thread::sleep_for(kSilence);
    pty_.send(kAck);
  });
  const std::chrono::microseconds before = processorTime();
  EXPECT_EQ(receive(channel, 0x8300), kAck);
  const std::chrono::microseconds used = processorTime() - before;
  farEnd.join();
  EXPECT_LT(used, kSilence / 4) << "a wait that spins takes all of it";
}

long openTtys(const std::string& path) {
  long count = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;  // the descriptor of the iterator itself
    count += fs::read_symlink(entry, gone) == path ? 1 : 0;
  }
  return count;
}

TEST_F(SerialLine, IsClosedWithTheChannel) {
  const long before = openTtys(pty_.path());
  {
    const orbIO channel;
    EXPECT_EQ(openTtys(pty_.path()), before + 1);
  }
  EXPECT_EQ(openTtys(pty_.path()), before);
}

}  // namespace
}  // namespace orb::test
