#pragma once

#include <chrono>
#include <utility>
#include <vector>

#include "orb-sim/device.h"
#include "support/hex_text.h"

namespace orb::test {

/// What a device says, and in which millisecond.
using Timeline = std::vector<std::pair<int, Bytes>>;

/// What a device says to these bytes, and in so many milliseconds after them, one tick each.
inline Timeline timelineOf(sim::Device& device, const Bytes& heard, int length) {
  Timeline timeline;
  for (int ms = 0; ms <= length; ++ms) {
    Bytes bytes = ms > 0 ? device.tick(std::chrono::milliseconds(1))
                         : (heard.empty() ? Bytes{} : device.receive(heard));
    if (!bytes.empty()) {
      timeline.emplace_back(ms, std::move(bytes));
    }
  }
  return timeline;
}

}  // namespace orb::test
