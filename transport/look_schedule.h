#pragma once

#include <algorithm>
#include <chrono>

namespace orb {

/// How long to sleep before the next look at the line, after `looks` looks without a sleep and
/// `slept` asleep; zero while looks follow each other at once.
///
/// The first looks follow each other at once, for a reply that is nearly there. They take about a
/// tenth of a millisecond together. After them come sleeps that grow with the time slept so far, so
/// that a reply which takes long is seen late by a small part of its delay, and a line that stays
/// silent costs next to no processor.
constexpr std::chrono::nanoseconds sleepBeforeLook(int looks, std::chrono::nanoseconds slept) {
  using std::chrono::microseconds;
  using std::chrono::milliseconds;
  using std::chrono::nanoseconds;
  constexpr int kLooksAtOnce = 64;
  constexpr microseconds kShortest(50);
  // Added to the share, since each wake-up costs 15 to 60 µs of processor.
  constexpr microseconds kWorthWaking(350);
  constexpr int kShare = 12;
  constexpr milliseconds kLong(4);
  constexpr int kShareOfLong = 30;
  constexpr milliseconds kLongest(15);

  if (looks < kLooksAtOnce) {
    return nanoseconds::zero();
  }
  const nanoseconds doubled = std::max<nanoseconds>(slept, kShortest);
  const nanoseconds longest = std::clamp<nanoseconds>(slept / kShareOfLong, kLong, kLongest);
  return std::min({doubled, kWorthWaking + slept / kShare, longest});
}

/// The schedule by which one reply is looked for, from the beginning of its wait.
///
/// Bytes that are not the reply start nothing anew, so that a line that is never quiet costs no
/// more than a silent one. The clock is never read.
class LookSchedule {
 public:
  /// Lets the time until the next look pass. Between looks that follow each other at once, other
  /// threads get the processor: what brings the reply may need this very core.
  void waitForNextLook();

 private:
  int looks_ = 0;
  std::chrono::nanoseconds slept_{0};
};

}  // namespace orb
