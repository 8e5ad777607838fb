#include "device/shared_device.h"

#include <algorithm>
#include <utility>

namespace orb::sim {

using std::chrono::milliseconds;

/// Keeps for the other end what the device has said; returns all that this end has to say.
Bytes SharedDevice::share(const Bytes& said, std::size_t self) {
  append(waiting_[1 - self], said);
  append(waiting_[self], said);
  return std::exchange(waiting_[self], {});
}

Bytes SharedDevice::End::receive(const Bytes& bytes) {
  const std::lock_guard lock(shared_.mutex_);
  return shared_.share(shared_.device_.receive(bytes), self_);
}

Bytes SharedDevice::End::tick(milliseconds elapsed) {
  const std::lock_guard lock(shared_.mutex_);
  return shared_.share(self_ == 0 ? shared_.device_.tick(elapsed) : Bytes{}, self_);
}

milliseconds SharedDevice::End::untilNextOutput() const {
  // The other end may leave something at any time.
  constexpr milliseconds kPollInterval{20};
  const std::lock_guard lock(shared_.mutex_);
  return std::min(kPollInterval, shared_.device_.untilNextOutput());
}

bool SharedDevice::End::takeHangUp() {
  const std::lock_guard lock(shared_.mutex_);
  if (shared_.device_.takeHangUp()) {
    shared_.hangUps_.fill(true);
  }
  return std::exchange(shared_.hangUps_[self_], false);
}

bool SharedDevice::End::takesMore() const {
  const std::lock_guard lock(shared_.mutex_);
  return shared_.device_.takesMore();
}

unsigned int SharedDevice::End::speed() const {
  const std::lock_guard lock(shared_.mutex_);
  return shared_.device_.speed();
}

void SharedDevice::End::setClientSpeed(unsigned int baud) {
  const std::lock_guard lock(shared_.mutex_);
  shared_.device_.setClientSpeed(baud);
}

}  // namespace orb::sim
