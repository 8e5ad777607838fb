#include "line/received_log.h"

#include <algorithm>

namespace orb::sim {
namespace {

template <typename Element>
void keepNewest(std::deque<Element>& elements, std::size_t count) {
  if (elements.size() > count) {
    const auto surplus = static_cast<std::ptrdiff_t>(elements.size() - count);
    elements.erase(elements.begin(), elements.begin() + surplus);
  }
}

}  // namespace

void ReceivedLog::add(const Bytes& bytes, PtyLine::Clock::time_point at) {
  {
    const std::lock_guard lock(mutex_);
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    for (Frame& frame : reader_.push(bytes)) {
      packets_.push_back({std::move(frame), at});
    }
    keepNewest(bytes_, PtyLine::kMostReceivedBytes);
    keepNewest(packets_, PtyLine::kMostReceivedPackets);
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
  return Bytes(bytes_.begin(), bytes_.end());
}

std::vector<ReceivedLog::Received> ReceivedLog::packets() const {
  const std::lock_guard lock(mutex_);
  return {packets_.begin(), packets_.end()};
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
