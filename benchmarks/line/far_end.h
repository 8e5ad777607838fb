#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "simulator/line/owned_descriptor.h"

namespace orb::bench {

using Bytes = std::vector<unsigned char>;

/// A pty, and at its far end a thread that answers every query of kQueryLength bytes with the same
/// bytes.
///
/// The thread never sleeps while it waits for a query, so that what is measured is the near end. It
/// gives way between its looks: the kernel's own thread, which carries the bytes over, would
/// otherwise wait for the end of this one's time slice.
class FarEnd {
 public:
  using Clock = std::chrono::steady_clock;

  static constexpr unsigned long kQueryLength = 8;

  explicit FarEnd(Bytes answer);
  FarEnd(const FarEnd&) = delete;
  FarEnd& operator=(const FarEnd&) = delete;
  ~FarEnd();

  /// The device to open.
  const std::string& tty() const { return tty_; }

  /// From the next query on, answers so long after it.
  void answerAfter(std::chrono::nanoseconds delay) { delay_ = delay; }

  /// When the answer that was just received was given to the line.
  Clock::time_point answeredAt() const { return answeredAt_; }

 private:
  void serve();
  void answer();

  const Bytes answer_;
  sim::OwnedDescriptor master_;
  sim::OwnedDescriptor slave_;  // held, so that the pty outlives the near end's descriptors
  std::string tty_;
  std::atomic<std::chrono::nanoseconds> delay_{std::chrono::nanoseconds::zero()};
  std::atomic<Clock::time_point> answeredAt_{};
  std::atomic<bool> stopping_{false};
  std::thread thread_;  // the last, since it uses the others
};

}  // namespace orb::bench
