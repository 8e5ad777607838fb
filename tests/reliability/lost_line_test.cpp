// A line that is taken away: by another reader, by a hang-up, by a fork of the client.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <functional>
#include <utility>

#include "base/owned_descriptor.h"
#include "orb-gnss/module_driver.h"
#include "orb-sim/receiver.h"
#include "support/captured_output.h"
#include "support/device_files.h"
#include "support/simulated_line.h"
#include "support/simulated_sleep.h"

namespace orb::test {
namespace {

using std::chrono::nanoseconds;

constexpr std::chrono::minutes kForEver{10};

/// A receiver that drops the line once, where it is told to.
class DroppingReceiver : public sim::Receiver {
 public:
  sim::Bytes receive(const sim::Bytes& bytes) override {
    isDropping_ = std::exchange(drops_, false);
    return isDropping_ ? sim::Bytes{} : sim::Receiver::receive(bytes);
  }
  bool takeHangUp() override { return std::exchange(isDropping_, false); }

  void dropAtTheNextMessage() { drops_ = true; }

 private:
  bool drops_ = false;
  bool isDropping_ = false;
};

class LostLine : public testing::Test {
 protected:
  LostLine() { receiver_.talkFromTheStart(); }

  /// Does something each time after the line has been served in the client's sleep.
  void inEachSleep(std::function<void()> action) {
    const auto serve = SimulatedSleep::current()->onSleep;
    SimulatedSleep::current()->onSleep = [serve, action](nanoseconds duration) {
      serve(duration);
      action();
    };
  }

  unsigned int query() {
    const CapturedOutput standardError(2);
    line_.setLimit(kForEver);
    unsigned int mode = 0;
    return driver_.gpsObtGetPowerMode(mode);
  }

  void expectThatTheNextQueryWorks() {
    SimulatedSleep::current()->onSleep = serve_;
    EXPECT_EQ(query(), 0U);
  }

  DeviceFiles files_;
  DroppingReceiver receiver_;
  SimulatedLine line_{receiver_, files_.tty};
  const std::function<void(nanoseconds)> serve_ = SimulatedSleep::current()->onSleep;
  orbController_QN4470T01 driver_;
};

TEST_F(LostLine, ToAnotherReaderHoldsTheCallAlthoughBytesFlow) {
  const OwnedDescriptor other(::open(files_.tty.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK));
  std::size_t taken = 0;
  inEachSleep([&] {
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(other.get(), bytes.data(), bytes.size());
    taken += count > 0 ? static_cast<std::size_t>(count) : 0;
  });
  EXPECT_THROW(query(), WaitsForEver);
  EXPECT_GT(taken, 10'000U);  // ten minutes of sentences, the reply among them
  expectThatTheNextQueryWorks();
}

TEST_F(LostLine, ByAHangUpHoldsTheCallAndIsFoundAgainByTheNext) {
  receiver_.dropAtTheNextMessage();
  EXPECT_THROW(query(), WaitsForEver);
  expectThatTheNextQueryWorks();
}

TEST_F(LostLine, IsNotLostToAChildThatIsForkedInMidExchange) {
  int children = 0;
  inEachSleep([&] {
    const pid_t child = ::fork();
    if (child == 0) {
      ::_exit(0);  // its copies of the descriptors are closed
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    ++children;
  });
  EXPECT_EQ(query(), 0U);
  EXPECT_GT(children, 0);
  expectThatTheNextQueryWorks();
}

}  // namespace
}  // namespace orb::test
