#pragma once

#include <algorithm>
#include <chrono>

namespace orb {

/// The pauses between looks at a line while one reply is waited for.
///
/// The first looks follow each other at once, for a reply that is nearly there. They take about a
/// tenth of a millisecond together, and each gives way to other threads: what brings the reply may
/// need this very core. After them come sleeps that grow with the time slept so far, so that a
/// reply which takes long is seen late by a small part of its delay, and a line that stays silent
/// costs next to no processor. Bytes that are not the reply start nothing anew, so that a line that
/// is never quiet costs no more. The clock is never read.
class Silence {
 public:
  /// How long to sleep before the next look; zero while the looks follow each other at once.
  constexpr std::chrono::nanoseconds nextSleep() const {
    using std::chrono::microseconds;
    using std::chrono::milliseconds;
    using std::chrono::nanoseconds;
    constexpr int kLooksAtOnce = 64;
    constexpr microseconds kShortest(50);
    // On top of the share, since each wake-up costs 15 to 60 µs of processor.
    constexpr microseconds kWorthWaking(350);
    constexpr int kShare = 12;
    constexpr milliseconds kLong(4);
    constexpr int kShareOfLong = 30;
    constexpr milliseconds kLongest(15);

    if (looks_ < kLooksAtOnce) {
      return nanoseconds::zero();
    }
    const nanoseconds doubled = std::max<nanoseconds>(slept_, kShortest);
    const nanoseconds longest = std::clamp<nanoseconds>(slept_ / kShareOfLong, kLong, kLongest);
    return std::min({doubled, kWorthWaking + slept_ / kShare, longest});
  }

  /// Lets the time until the next look pass.
  void pause();

 private:
  int looks_ = 0;
  std::chrono::nanoseconds slept_{0};
};

}  // namespace orb
