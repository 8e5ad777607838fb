#pragma once

#include <cstdint>

namespace orb::sim {

/// Random numbers that are the same on every machine: splitmix64, begun from the place that the
/// draw has. What is drawn at one place does not depend on what was drawn at another.
class Draw {
 public:
  Draw(std::uint64_t seed, std::uint64_t stream, std::uint64_t count)
      : state_(mix(mix(mix(seed) + stream) + count)) {}

  std::uint64_t next() { return mix(state_ += kStep); }

  /// 0 to 1, without 1.
  double fraction() { return static_cast<double>(next() >> 11) * 0x1p-53; }

  /// 0 to count - 1; count must not be 0.
  std::uint64_t below(std::uint64_t count) { return next() % count; }

 private:
  static constexpr std::uint64_t kStep = 0x9E3779B97F4A7C15U;

  static std::uint64_t mix(std::uint64_t value) {
    value += kStep;
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31);
  }

  std::uint64_t state_;
};

}  // namespace orb::sim
