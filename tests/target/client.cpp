// What the checks on the target run.
//
//   target-client operations     each of its operations once, then each query again, with results
//                                and outputs compared with those of a receiver that keeps its
//                                settings
//   target-client ask            a query for each line of standard input, with result and duration
//   target-client supervise      the same of the supervised controller, with what it says besides
//   target-client identity       writes the identity file

#include <chrono>
#include <iostream>
#include <string>
#include <string_view>

#include "operations/operations.h"
#include "orb-gnss/controller.h"
#include "orb-gnss/supervised_controller.h"

namespace orb::test {
namespace {

using Clock = std::chrono::steady_clock;

long long millisecondsSince(Clock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

class EveryOperation {
 public:
  int run() {
    const Clock::time_point start = Clock::now();
    for (const Operation& operation : operations()) {
      carryOut(operation);
    }
    for (const Operation& operation : operations()) {
      if (operation.outputs) {
        carryOut(operation);
      }
    }
    std::cerr << calls_ << " calls of " << operations().size() << " operations in "
              << millisecondsSince(start) << " ms, " << failures_ << " failures" << std::endl;
    return failures_ == 0 ? 0 : 1;
  }

 private:
  void carryOut(const Operation& operation) {
    const Drawn drawn = operation.draw(numbers_);
    const Clock::time_point start = Clock::now();
    const Outcome outcome = drawn.call(driver_);
    const bool isRight =
        outcome.result == drawn.result && isTrue(operation, outcome.outputs, state_);
    ++calls_;
    failures_ += isRight ? 0 : 1;
    std::cerr << (isRight ? "right " : "WRONG ") << operation.name << ": " << outcome.result << " ("
              << outcome.outputs << ") after " << millisecondsSince(start) << " ms" << std::endl;
    if (!isRight && operation.outputs) {
      std::cerr << "  not " << drawn.result << " (" << operation.outputs(state_) << ")"
                << std::endl;
    }
    state_ = after(drawn, state_);
  }

  Numbers numbers_{1};
  sim::State state_;
  Driver driver_;
  int calls_ = 0;
  int failures_ = 0;
};

/// Calls `query` once for each line of standard input.
template <typename Query>
int askForEachLine(Query query) {
  for (std::string line; std::getline(std::cin, line);) {
    const Clock::time_point start = Clock::now();
    const unsigned int result = query();
    std::cerr << "result " << result << " after " << millisecondsSince(start) << " ms" << std::endl;
  }
  return 0;
}

int ask() {
  Driver driver;
  return askForEachLine([&] {
    unsigned int mode = 0;
    return driver.gpsObtGetPowerMode(mode);
  });
}

int supervise() {
  orbSupervisedController receiver;
  return askForEachLine([&] {
    unsigned char limit = 0;
    const unsigned int result = receiver.getElevationLimit(limit);
    std::cerr << "limit " << int{limit} << ", \"" << orbSupervisedController::lastCall().problem
              << "\", ";
    return result;
  });
}

int writeIdentity() {
  orbController receiver;
  receiver.saveorbitekChipInfo();
  return receiver.IsOrbitek() ? 0 : 1;
}

}  // namespace
}  // namespace orb::test

int main(int argc, char** argv) {
  const std::string_view what = argc > 1 ? argv[1] : "";
  if (what == "operations") {
    return orb::test::EveryOperation().run();
  }
  if (what == "ask") {
    return orb::test::ask();
  }
  if (what == "supervise") {
    return orb::test::supervise();
  }
  if (what == "identity") {
    return orb::test::writeIdentity();
  }
  std::cerr << "target-client operations | ask | supervise | identity" << std::endl;
  return 2;
}
