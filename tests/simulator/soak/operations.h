#pragma once

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "orb-gnss/module_driver.h"
#include "orb-sim/receiver.h"

namespace orb::sim::test {

/// Random numbers that are the same with every standard library, unlike its distributions.
class Numbers {
 public:
  explicit Numbers(unsigned int seed) : engine_(seed) {}
  int between(int lowest, int highest) {
    const auto count = static_cast<std::uint64_t>(highest - lowest) + 1;
    return lowest + static_cast<int>(engine_() % count);
  }
  bool coin() { return between(0, 1) == 1; }

 private:
  std::mt19937 engine_;
};

/// What came of an operation.
struct Outcome {
  unsigned int result;
  bool isTrue;         ///< what it says agrees with what the receiver keeps
  bool isRead = true;  ///< it is a query, or reads back what it has set
};

/// One of the library's operations, with arguments drawn at random, in front of this receiver.
struct Operation {
  std::string name;
  std::uint16_t reply;  ///< the message that it takes its values from
  std::function<Outcome(orbController_QN4470T01&, const Receiver&, Numbers&)> carryOut;
};

/// Queries and settings of every kind.
const std::vector<Operation>& operations();

}  // namespace orb::sim::test
