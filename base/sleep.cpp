#include "base/sleep.h"

#include <cerrno>
#include <ctime>

namespace orb {

void sleepFor(std::chrono::nanoseconds duration) {
  constexpr long long kNanosecondsPerSecond = 1'000'000'000;
  timespec remaining{};
  remaining.tv_sec = static_cast<std::time_t>(duration.count() / kNanosecondsPerSecond);
  remaining.tv_nsec = static_cast<long>(duration.count() % kNanosecondsPerSecond);
  while (::nanosleep(&remaining, &remaining) != 0 && errno == EINTR) {
  }
}

}  // namespace orb
