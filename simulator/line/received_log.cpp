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

void ReceivedLog::add(const Bytes& bytes) {
  {
    const std::lock_guard lock(mutex_);
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    for (const Frame& packet : reader_.push(bytes)) {
      messages_.push_back(packet.id());
    }
    keepNewest(bytes_, kMostBytes);
    keepNewest(messages_, kMostMessages);
  }
  grown_.notify_all();
}

void ReceivedLog::forget() {
  const std::lock_guard lock(mutex_);
  bytes_.clear();
  messages_.clear();
}

Bytes ReceivedLog::bytes() const {
  const std::lock_guard lock(mutex_);
  return Bytes(bytes_.begin(), bytes_.end());
}

bool ReceivedLog::waitForBytes(std::size_t count, std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  return grown_.wait_for(lock, limit, [&] { return bytes_.size() >= count; });
}

bool ReceivedLog::waitForMessage(std::uint16_t id, std::size_t count,
                                 std::chrono::milliseconds limit) {
  const auto enough = [&] {
    const auto found = std::count(messages_.begin(), messages_.end(), id);
    return static_cast<std::size_t>(found) >= count;
  };
  std::unique_lock lock(mutex_);
  return grown_.wait_for(lock, limit, enough);
}

}  // namespace orb::sim
