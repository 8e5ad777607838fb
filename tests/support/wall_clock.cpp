#include "support/wall_clock.h"

#include <stdlib.h>
#include <sys/time.h>

#include <algorithm>
#include <utility>

#include "support/replacement.h"

namespace orb::test {

namespace {

WallClock* current = nullptr;

timespec realTime() {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return now;
}

}  // namespace

WallClock::WallClock() {
  ::setenv("TZ", "UTC0", 1);
  ::tzset();
  current = this;
}

WallClock::~WallClock() { current = nullptr; }

void WallClock::standAt(std::time_t seconds, long microseconds) {
  start_ = seconds;
  microseconds_ = microseconds;
  passSeconds({0});
}

void WallClock::passSeconds(std::vector<int> seconds) {
  passing_ = std::move(seconds);
  readings_ = 0;
}

std::time_t WallClock::read() {
  const auto reading = static_cast<std::size_t>(readings_++);
  return start_ + passing_[std::min(reading, passing_.size() - 1)];
}

}  // namespace orb::test

ORB_TEST_REPLACEMENT std::time_t time(std::time_t* result) noexcept {
  const std::time_t now =
      orb::test::current != nullptr ? orb::test::current->read() : orb::test::realTime().tv_sec;
  if (result != nullptr) {
    *result = now;
  }
  return now;
}

ORB_TEST_REPLACEMENT int gettimeofday(timeval* result, void* /*zone*/) noexcept {
  const timespec real = orb::test::realTime();
  *result = {real.tv_sec, real.tv_nsec / 1000};
  if (orb::test::current != nullptr) {
    result->tv_usec = orb::test::current->microseconds();
  }
  return 0;
}
