#pragma once

#include <atomic>
#include <chrono>

#include "orb-sim/bytes.h"
#include "orb-sim/device.h"

namespace orb::test {

/// Says what it hears, and drops the line when it hears kDrop alone or last, or when it is told to.
class EchoDevice : public sim::Device {
 public:
  static constexpr std::uint8_t kDrop = 0xDD;

  void drop() { dropped_ = true; }

  sim::Bytes receive(const sim::Bytes& bytes) override {
    if (bytes.back() == kDrop) {
      drop();
    }
    return bytes;
  }
  sim::Bytes tick(std::chrono::milliseconds) override { return {}; }
  bool takeHangUp() override { return dropped_.exchange(false); }

 private:
  std::atomic<bool> dropped_{false};
};

}  // namespace orb::test
