#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <string>
#include <thread>

#include "base/raw_pty.h"
#include "support/sample_bytes.h"

namespace orb::bench {

/// A pty, and at its far end a thread that answers: to each query of kQueryLength bytes it writes
/// the answer that belongs to the query's first byte.
///
/// The thread sleeps until a query comes, as the programs at the far end of a pty do. One that
/// keeps looking instead takes a processor from the kernel's own thread, which carries the bytes
/// over: on two processors, exchanges then take 18 to 60 µs by where the kernel puts that thread.
class FarEnd {
 public:
  using Clock = std::chrono::steady_clock;

  static constexpr unsigned long kQueryLength = 8;

  explicit FarEnd(std::map<unsigned char, Bytes> answers);

  /// The device to open.
  const std::string& tty() const { return pty_.path; }

  /// From the next query on, answers so long after it.
  void answerAfter(std::chrono::nanoseconds delay) { delay_ = delay; }

  /// When the answer that was just received was written to the line.
  Clock::time_point answeredAt() const { return answeredAt_; }

 private:
  void serve(const std::stop_token& stop);
  void answer(unsigned char first);

  const std::map<unsigned char, Bytes> answers_;
  RawPty pty_{O_NONBLOCK};
  std::atomic<std::chrono::nanoseconds> delay_{std::chrono::nanoseconds::zero()};
  std::atomic<Clock::time_point> answeredAt_{};
  std::jthread thread_;  // the last, since it uses the others
};

}  // namespace orb::bench
