#include "faults/pacer.h"

#include <algorithm>

#include "orb-sim/device.h"

namespace orb::sim {
namespace {

constexpr std::uint64_t kByte = 10'000;  // thousandths of a bit, start and stop bit included

}  // namespace

Bytes Pacer::take(Milliseconds elapsed) {
  std::size_t count = waiting_.size();
  if (baud_ != 0) {
    passed_ += baud_ * static_cast<std::uint64_t>(elapsed.count());
    count = static_cast<std::size_t>(std::min<std::uint64_t>(count, passed_ / kByte));
    passed_ -= count * kByte;
  }
  Bytes bytes = takeFirst(waiting_, count);
  if (waiting_.empty()) {
    passed_ = 0;  // an idle line saves nothing up
  }
  return bytes;
}

Pacer::Milliseconds Pacer::untilNext() const {
  if (waiting_.empty()) {
    return Device::kNever;
  }
  const std::uint64_t left = baud_ == 0 || passed_ >= kByte ? 0 : kByte - passed_;
  return Milliseconds{left == 0 ? 0 : (left + baud_ - 1) / baud_};
}

}  // namespace orb::sim
