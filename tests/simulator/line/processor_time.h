#pragma once

#include <time.h>

#include <chrono>
#include <thread>

namespace orb::test {

/// Whether something in this process spins: a thread that does takes as much processor time as the
/// clock shows, one that sleeps next to none.
inline bool spins() {
  constexpr std::chrono::milliseconds kWatched{500};
  const auto used = [] {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
  };
  const std::chrono::nanoseconds before = used();
  std::this_thread::sleep_for(kWatched);
  return used() - before >= kWatched / 4;
}

}  // namespace orb::test
