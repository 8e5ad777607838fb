#include "line/received_log.h"

#include <algorithm>

namespace orb::sim {

void ReceivedLog::add(const Bytes& bytes, PtyLine::Clock::time_point at) {
  {
    const std::lock_guard lock(mutex_);
    append(bytes_, bytes);
    for (Frame& frame : reader_.push(bytes)) {
      packets_.push_back({std::move(frame), at});
    }
  }
  grown_.notify_all();
}

void ReceivedLog::forget() {
  const std::lock_guard lock(mutex_);
  bytes_.clear();
  packets_.clear();
}

Bytes ReceivedLog::bytes() const {
  const std::lock_guard lock(mutex_);
  return bytes_;
}

std::vector<ReceivedLog::Received> ReceivedLog::packets() const {
  const std::lock_guard lock(mutex_);
  return packets_;
}

bool ReceivedLog::waitForBytes(std::size_t count, std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  return grown_.wait_for(lock, limit, [&] { return bytes_.size() >= count; });
}

bool ReceivedLog::waitForPackets(const Predicate& wanted, std::size_t count,
                                 std::chrono::milliseconds limit) {
  const auto enough = [&] {
    const auto found = std::count_if(packets_.begin(), packets_.end(), wanted);
    return static_cast<std::size_t>(found) >= count;
  };
  std::unique_lock lock(mutex_);
  return grown_.wait_for(lock, limit, enough);
}

}  // namespace orb::sim
