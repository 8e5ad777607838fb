#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

#include "orb-sim/frame.h"
#include "orb-sim/pty_line.h"

namespace orb::sim {

/// What clients have written, as bytes and as packets, for any thread to read and to wait for. The
/// oldest goes when there is more than PtyLine keeps.
class ReceivedLog {
 public:
  using Received = PtyLine::Received;
  using Predicate = std::function<bool(const Received&)>;

  void add(const Bytes& bytes, PtyLine::Clock::time_point at);
  void forget();

  Bytes bytes() const;
  std::vector<Received> packets() const;

  /// Wait until so many bytes, or `count` packets that satisfy `wanted`, are there; false when that
  /// takes longer than `limit`.
  bool waitForBytes(std::size_t count, std::chrono::milliseconds limit);
  bool waitForPackets(const Predicate& wanted, std::size_t count, std::chrono::milliseconds limit);

 private:
  mutable std::mutex mutex_;
  std::condition_variable grown_;
  FrameReader reader_;
  std::deque<std::uint8_t> bytes_;
  std::deque<Received> packets_;
};

}  // namespace orb::sim
