#include "delayed_reply.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace orb::test {

DelayedReply::DelayedReply(TtyCalls& calls, const SimulatedSleep& sleep, std::vector<Bytes> pieces)
    : sleep_(sleep), pieces_(std::move(pieces)) {
  calls.read = [this](int, void* buffer, std::size_t size) { return look(buffer, size); };
}

void DelayedReply::comeAfter(int emptyLooks, std::chrono::nanoseconds slept) {
  next_ = 0;
  looks_ = 0;
  emptyLooks_ = emptyLooks;
  due_ = sleep_.slept() + slept;
}

long DelayedReply::look(void* buffer, std::size_t size) {
  constexpr int kTooManyLooks = 5000;
  if (++looks_ > kTooManyLooks) {
    throw std::runtime_error("the wait spins, or waits for what does not come");
  }
  if (looks_ <= emptyLooks_ || sleep_.slept() < due_ || next_ == pieces_.size()) {
    errno = EAGAIN;
    return -1;
  }
  const Bytes& piece = pieces_[next_++];
  const std::size_t count = std::min(size, piece.size());
  std::copy_n(piece.begin(), count, static_cast<std::uint8_t*>(buffer));
  return static_cast<long>(count);
}

}  // namespace orb::test
