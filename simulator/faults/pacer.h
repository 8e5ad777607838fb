#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "orb-sim/bytes.h"

namespace orb::sim {

/// Lets bytes through no faster than a serial line does: 10 bits a byte.
class Pacer {
 public:
  using Milliseconds = std::chrono::milliseconds;

  /// At 0 baud, bytes pass at once.
  explicit Pacer(unsigned int baud) : baud_(baud) {}

  void setBaud(unsigned int baud) { baud_ = baud; }
  void add(const Bytes& bytes) { append(waiting_, bytes); }
  std::size_t waiting() const { return waiting_.size(); }
  void clear() { waiting_.clear(); }

  /// Lets time pass; returns the bytes that have come through in that time.
  Bytes take(Milliseconds elapsed);

  /// When take() returns something next, or Device::kNever.
  Milliseconds untilNext() const;

 private:
  std::uint64_t baud_;
  Bytes waiting_;
  std::uint64_t passed_ = 0;  ///< of the byte that is under way, in thousandths of a bit
};

}  // namespace orb::sim
