#include "support/simulated_sleep.h"

#include <sched.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>

#include "support/replacement.h"

namespace orb::test {

namespace {

SimulatedSleep* active = nullptr;

bool isSimulated(const timespec* duration) {
  if (active != nullptr) {
    active->sleep(std::chrono::seconds(duration->tv_sec) +
                  std::chrono::nanoseconds(duration->tv_nsec));
  }
  return active != nullptr;
}

}  // namespace

SimulatedSleep::SimulatedSleep() { active = this; }
SimulatedSleep::~SimulatedSleep() { active = nullptr; }

SimulatedSleep* SimulatedSleep::current() { return active; }

void SimulatedSleep::sleep(Nanoseconds duration) {
  slept_ += duration;
  ++sleeps_;
  if (onSleep) {
    onSleep(duration);
  }
}

}  // namespace orb::test

// What is not simulated goes to the kernel.

ORB_TEST_REPLACEMENT int clock_nanosleep(clockid_t clock, int flags, const timespec* duration,
                                         timespec* left) {
  const bool isRelative = flags == 0;
  if (isRelative && orb::test::isSimulated(duration)) {
    return 0;
  }
  return syscall(SYS_clock_nanosleep, clock, flags, duration, left) == 0 ? 0 : errno;
}

ORB_TEST_REPLACEMENT int nanosleep(const timespec* duration, timespec* left) {
  return orb::test::isSimulated(duration)
             ? 0
             : static_cast<int>(syscall(SYS_nanosleep, duration, left));
}

ORB_TEST_REPLACEMENT int sched_yield() noexcept {
  if (orb::test::SimulatedSleep* const simulated = orb::test::SimulatedSleep::current()) {
    simulated->noteYield();
    return 0;
  }
  return static_cast<int>(syscall(SYS_sched_yield));
}
