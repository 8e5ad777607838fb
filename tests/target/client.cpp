// What the checks on the target run: the driver, without a deadline.
//
//   target-client operations     each of its operations once, then each query again, with results
//                                and outputs compared with those of a receiver that keeps its settings
//   target-client ask COUNT      a query, COUNT times or without end, with its result and duration
//   target-client identity       writes the identity file

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <thread>

#include "operations/operations.h"
#include "orb-gnss/controller.h"

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
    const bool isRight = outcome.result == drawn.result && isTrue(operation, outcome.outputs, state_);
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

int ask(long count) {
  constexpr std::chrono::milliseconds kPause{100};
  Driver driver;
  bool isAnswered = true;
  for (long i = 1; count == 0 || i <= count; ++i) {
    const Clock::time_point start = Clock::now();
    unsigned int mode = 0;
    const unsigned int result = driver.gpsObtGetPowerMode(mode);
    isAnswered = isAnswered && result == 0;
    std::cerr << "asked " << i << ": " << result << " after " << millisecondsSince(start) << " ms"
              << std::endl;
    std::this_thread::sleep_for(kPause);
  }
  return isAnswered ? 0 : 1;
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
  if (what == "ask" && argc > 2) {
    return orb::test::ask(std::strtol(argv[2], nullptr, 10));
  }
  if (what == "identity") {
    return orb::test::writeIdentity();
  }
  std::cerr << "target-client operations | ask COUNT | identity" << std::endl;
  return 2;
}
