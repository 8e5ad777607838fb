#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>

#include "orb-sim/frame.h"

namespace orb::sim {

/// What clients have written, as bytes and as messages, for any thread to read and to wait for.
class ReceivedLog {
 public:
  /// What it holds at most: the oldest goes.
  static constexpr std::size_t kMostBytes = std::size_t{1} << 20;
  static constexpr std::size_t kMostMessages = std::size_t{1} << 16;

  void add(const Bytes& bytes);
  void forget();

  Bytes bytes() const;

  /// Wait until so many bytes, or `count` packets of a message, are there; false when that takes
  /// longer than `limit`.
  bool waitForBytes(std::size_t count, std::chrono::milliseconds limit);
  bool waitForMessage(std::uint16_t id, std::size_t count, std::chrono::milliseconds limit);

 private:
  mutable std::mutex mutex_;
  std::condition_variable grown_;
  FrameReader reader_;
  std::deque<std::uint8_t> bytes_;
  std::deque<std::uint16_t> messages_;
};

}  // namespace orb::sim
