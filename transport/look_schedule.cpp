#include "transport/look_schedule.h"

#include <sched.h>

#include <ctime>

namespace orb {

void LookSchedule::waitForNextLook() {
  const std::chrono::nanoseconds duration = sleepBeforeLook(looks_, slept_);
  if (duration == std::chrono::nanoseconds::zero()) {
    ++looks_;
    sched_yield();
    return;
  }
  timespec request{};
  request.tv_nsec = static_cast<long>(duration.count());
  // Cut short by a signal, the sleep only makes the next look come earlier.
  clock_nanosleep(CLOCK_MONOTONIC, 0, &request, nullptr);
  slept_ += duration;
}

}  // namespace orb
