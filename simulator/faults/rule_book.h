#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/draw.h"
#include "orb-sim/faults.h"
#include "orb-sim/frame.h"

namespace orb::sim {

/// The rules of a faulty device, and how often each of them has met its message.
class RuleBook {
 public:
  /// A rule that falls on a message, with what it has to draw from.
  struct Hit {
    std::size_t index;
    FaultRule rule;
    Draw draw;
  };

  /// Throws std::invalid_argument for a rule that has no meaning.
  RuleBook(std::vector<FaultRule> rules, std::uint64_t seed);

  /// Counts the message, and returns the rules that fall on it, in their order.
  std::vector<Hit> hitsOn(const Frame& message);

 private:
  struct Entry {
    FaultRule rule;
    std::size_t occurrences = 0;
    std::size_t hits = 0;
  };

  static bool isDue(const Entry& entry);

  std::vector<Entry> entries_;
  std::uint64_t seed_;
};

}  // namespace orb::sim
