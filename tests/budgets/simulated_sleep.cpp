#include "simulated_sleep.h"

#include <poll.h>
#include <sched.h>
#include <sys/epoll.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace orb::test {

namespace {

SimulatedSleep* active = nullptr;

void noteOtherCall() {
  if (active != nullptr) {
    active->noteOtherCall();
  }
}

}  // namespace

SimulatedSleep::SimulatedSleep() { active = this; }
SimulatedSleep::~SimulatedSleep() { active = nullptr; }

SimulatedSleep* SimulatedSleep::current() { return active; }

void SimulatedSleep::sleep(std::chrono::nanoseconds duration) {
  slept_ += duration;
  ++sleeps_;
}

namespace {

std::chrono::nanoseconds durationOf(const timespec& time) {
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace

}  // namespace orb::test

// The library calls these through the dynamic linker, which finds a program's own definitions
// first. What is not simulated goes to the kernel.

#define ORB_TEST_REPLACEMENT extern "C" __attribute__((visibility("default")))

using orb::test::durationOf;
using orb::test::noteOtherCall;
using orb::test::SimulatedSleep;

ORB_TEST_REPLACEMENT int clock_nanosleep(clockid_t clock, int flags, const timespec* request,
                                         timespec* remaining) {
  if (SimulatedSleep* const simulated = SimulatedSleep::current()) {
    simulated->sleep(durationOf(*request));
    return 0;
  }
  return syscall(SYS_clock_nanosleep, clock, flags, request, remaining) == 0 ? 0 : errno;
}

ORB_TEST_REPLACEMENT int nanosleep(const timespec* request, timespec* remaining) {
  if (SimulatedSleep* const simulated = SimulatedSleep::current()) {
    simulated->sleep(durationOf(*request));
    return 0;
  }
  return static_cast<int>(syscall(SYS_nanosleep, request, remaining));
}

ORB_TEST_REPLACEMENT int sched_yield() noexcept {
  if (SimulatedSleep* const simulated = SimulatedSleep::current()) {
    simulated->noteYield();
  }
  return static_cast<int>(syscall(SYS_sched_yield));
}

ORB_TEST_REPLACEMENT int clock_gettime(clockid_t clock, timespec* now) noexcept {
  noteOtherCall();
  return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
}

ORB_TEST_REPLACEMENT int ppoll(pollfd* files, nfds_t count, const timespec* limit,
                               const sigset_t* signals) {
  noteOtherCall();
  timespec kept = limit != nullptr ? *limit : timespec{};
  return static_cast<int>(syscall(SYS_ppoll, files, count, limit != nullptr ? &kept : nullptr,
                                  signals, sizeof(unsigned long)));
}

ORB_TEST_REPLACEMENT int poll(pollfd* files, nfds_t count, int milliseconds) {
  const timespec limit{milliseconds / 1000, milliseconds % 1000 * 1'000'000L};
  return ppoll(files, count, milliseconds < 0 ? nullptr : &limit, nullptr);
}

ORB_TEST_REPLACEMENT int select(int, fd_set*, fd_set*, fd_set*, timeval*) {
  noteOtherCall();
  errno = ENOSYS;  // nothing here needs it
  return -1;
}

ORB_TEST_REPLACEMENT int epoll_wait(int, epoll_event*, int, int) {
  noteOtherCall();
  errno = ENOSYS;
  return -1;
}
