#pragma once

#include <chrono>
#include <cstddef>
#include <vector>

#include "support/hex_text.h"
#include "support/simulated_sleep.h"
#include "support/tty_calls.h"

namespace orb::test {

/// The far end of a tty in simulated time, which answers one wait: a piece a look, once so many
/// looks have found nothing and the waiting thread has slept for so long since the wait began.
class DelayedReply {
 public:
  /// Takes over the reads of the tty.
  DelayedReply(TtyCalls& calls, const SimulatedSleep& sleep, std::vector<Bytes> pieces);
  DelayedReply(const DelayedReply&) = delete;
  DelayedReply& operator=(const DelayedReply&) = delete;

  /// A wait begins now.
  void comeAfter(int emptyLooks, std::chrono::nanoseconds slept);

  /// How often the line was looked at in this wait.
  int looks() const { return looks_; }

 private:
  /// Throws std::runtime_error where the wait spins, or waits for more than there is.
  long look(void* buffer, std::size_t size);

  const SimulatedSleep& sleep_;
  std::vector<Bytes> pieces_;
  std::size_t next_ = 0;
  int looks_ = 0;
  int emptyLooks_ = 0;
  std::chrono::nanoseconds due_{0};
};

}  // namespace orb::test
