#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>

#include "orb-sim/bytes.h"
#include "orb-sim/device.h"

namespace orb::sim::test {

/// Says what it hears, and drops the line when it hears kDrop, or when it is told to.
class DroppingDevice : public Device {
 public:
  static constexpr std::uint8_t kDrop = 0xDD;

  void drop() { dropped_ = true; }

  Bytes receive(const Bytes& bytes) override {
    if (std::find(bytes.begin(), bytes.end(), kDrop) != bytes.end()) {
      drop();
    }
    return bytes;
  }
  Bytes tick(std::chrono::milliseconds) override { return {}; }
  bool takeHangUp() override { return dropped_.exchange(false); }

 private:
  std::atomic<bool> dropped_{false};
};

}  // namespace orb::sim::test
