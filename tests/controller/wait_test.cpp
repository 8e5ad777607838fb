#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <functional>
#include <vector>

#include "orb-gnss/module_driver.h"
#include "support/device_files.h"
#include "support/replacement.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using namespace std::chrono_literals;

/// Stands in for nanosleep(): what is to be slept, and where the rest goes. Empty: sleeps.
std::function<int(nanoseconds, timespec*)> pretendToSleep;

nanoseconds durationOf(const timespec& time) {
  return std::chrono::seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

}  // namespace

ORB_TEST_REPLACEMENT int nanosleep(const timespec* request, timespec* rest) {
  if (pretendToSleep) {
    return pretendToSleep(durationOf(*request), rest);
  }
  return static_cast<int>(::syscall(SYS_nanosleep, request, rest));
}

namespace orb::test {
namespace {

class Wait : public testing::Test {
 protected:
  ~Wait() override { pretendToSleep = nullptr; }

  /// From now on each sleep is recorded and ends with `error`; 0 for none.
  void endSleepsWith(int error) {
    pretendToSleep = [this, error](nanoseconds duration, timespec*) {
      slept_.push_back(duration);
      errno = error;
      return error == 0 ? 0 : -1;
    };
  }

  DeviceFiles files_;
  orbController_QN4470T01 driver_;
  std::vector<nanoseconds> slept_;
};

TEST_F(Wait, SleepsForTheDuration) {
  const auto start = std::chrono::steady_clock::now();
  driver_.wait(30ms);
  EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms);
}

TEST_F(Wait, SleepsOnceForAnyDurationOfTheStandardLibrary) {
  endSleepsWith(0);
  driver_.wait(2s + 345ms + 678ns);
  driver_.wait(milliseconds(50));
  driver_.wait(nanoseconds(0));
  EXPECT_EQ(slept_, (std::vector<nanoseconds>{2345000678ns, 50ms, 0ns}));
}

TEST_F(Wait, ResumesWithTheRestAfterEachSignal) {
  pretendToSleep = [this](nanoseconds duration, timespec* rest) {
    slept_.push_back(duration);
    if (duration <= 1s || rest == nullptr) {
      return 0;
    }
    *rest = {static_cast<std::time_t>((duration - 700ms) / 1s),
             static_cast<long>(((duration - 700ms) % 1s).count())};
    errno = EINTR;
    return -1;
  };
  driver_.wait(2s);
  EXPECT_EQ(slept_, (std::vector<nanoseconds>{2s, 1300ms, 600ms}));
}

TEST_F(Wait, StopsOnAnyOtherError) {
  for (const int error : {EINVAL, EFAULT, ENOSYS}) {
    slept_.clear();
    endSleepsWith(error);
    driver_.wait(1s);
    EXPECT_EQ(slept_, std::vector<nanoseconds>{1s}) << "errno " << error;
  }
}

TEST_F(Wait, EndsAtOnceForANegativeDuration) {
  driver_.wait(-1ns);
  driver_.wait(-1s);
  driver_.wait(-1500ms);
  EXPECT_EQ(slept_, std::vector<nanoseconds>{});
}

}  // namespace
}  // namespace orb::test
