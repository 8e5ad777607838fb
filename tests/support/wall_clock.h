#pragma once

#include <chrono>
#include <ctime>
#include <vector>

namespace orb::test {

/// What the C library's time() and gettimeofday() answer in this program while the object lives.
///
/// The clock stands still, at 2024-03-15 14:03:27.042 UTC unless told otherwise: a time-out passes
/// only in a test that lets it. Local time is UTC.
class WallClock {
 public:
  static constexpr std::time_t kStart = 1710511407;

  WallClock();
  WallClock(const WallClock&) = delete;
  WallClock& operator=(const WallClock&) = delete;
  ~WallClock();

  void standAt(std::time_t seconds, long microseconds);

  /// Lets time pass.
  void advance(std::chrono::seconds seconds) { start_ += seconds.count(); }

  /// From now on the n-th reading of time() is `seconds[n]` after where the clock stood; the last
  /// one repeats.
  void passSeconds(std::vector<int> seconds);

  /// How often time() has been read since passSeconds().
  int readings() const { return readings_; }

  // What the C library's functions answer.
  std::time_t read();
  long microseconds() const { return microseconds_; }

 private:
  std::time_t start_ = kStart;
  long microseconds_ = 42'000;
  std::vector<int> passing_{0};
  int readings_ = 0;
};

}  // namespace orb::test
