#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>

#include "orb-sim/device.h"
#include "orb-sim/frame.h"

namespace orb::test {

using Bytes = sim::Bytes;

constexpr std::uint16_t kQueryUpdateRate = 0x1000;
constexpr std::uint16_t kUpdateRate = 0x8600;
constexpr std::uint16_t kQueryGpsTime = 0x6420;
constexpr std::uint16_t kGpsTime = 0x648E;

/// A client of a device, in simulated time.
class SimulatedClient {
 public:
  using Milliseconds = std::chrono::milliseconds;

  explicit SimulatedClient(sim::Device& device) : device_(device) {}

  /// Sends the query and waits for its reply, at most so long.
  std::optional<sim::Frame> ask(std::uint16_t query, std::uint16_t reply,
                                Milliseconds limit = Milliseconds(1000)) {
    return await(reply, device_.receive(sim::frame(query)), limit);
  }

  /// Waits for a message that comes unasked.
  std::optional<sim::Frame> await(std::uint16_t message, Milliseconds limit) {
    return await(message, {}, limit);
  }

  /// Takes what the device says in this time.
  Bytes listen(Milliseconds time) {
    Bytes heard;
    for (const Milliseconds end = now_ + time; now_ < end;) {
      sim::append(heard, listenOnce(end));
    }
    return heard;
  }

  Milliseconds now() const { return now_; }

 private:
  std::optional<sim::Frame> await(std::uint16_t message, Bytes heard, Milliseconds limit) {
    sim::FrameReader reader;
    for (const Milliseconds end = now_ + limit;; heard = listenOnce(end)) {
      for (const sim::Frame& frame : reader.push(heard)) {
        if (frame.id() == message) {
          return frame;
        }
      }
      if (now_ >= end) {
        return std::nullopt;
      }
    }
  }

  // Until the device may say something, as a line does.
  Bytes listenOnce(Milliseconds end) {
    constexpr Milliseconds kShortest{1};
    const Milliseconds step = std::min(end - now_, std::max(device_.untilNextOutput(), kShortest));
    now_ += step;
    return device_.tick(step);
  }

  sim::Device& device_;
  Milliseconds now_{0};
};

}  // namespace orb::test
