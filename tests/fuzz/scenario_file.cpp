// Scenario files: any text is refused with its problems, or makes a device. Input: the text.

#include <sstream>
#include <stdexcept>
#include <string>

#include "orb-sim/frame.h"
#include "orb-sim/scenario.h"
#include "support/check.h"
#include "support/input.h"

namespace orb::test {
namespace {

using std::chrono::milliseconds;

/// A client asks for a few things, and some time passes.
void use(const sim::Scenario& scenario) {
  constexpr std::uint16_t kQueries[] = {0x0200, 0x1000, 0x6420, 0x4400};
  sim::ScenarioDevice device(scenario);
  for (const std::uint16_t message : kQueries) {
    device.receive(sim::frame(message, {0x01}));
    check(device.untilNextOutput() >= milliseconds(0), "the next output is not past");
    device.tick(milliseconds(100));
    device.takeHangUp();
  }
  for (const sim::FaultyDevice::Event& event : device.events()) {
    check(event.rule < scenario.faults.size(), "an event is of a rule of the scenario");
  }
}

void checkProblems(const std::string& problems) {
  std::istringstream lines(problems);
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    check(line.starts_with("f:"), "each problem names the file: " + line);
  }
  check(count > 0, "a refused file has a problem");
}

}  // namespace

void tryInput(Input input) {
  sim::Scenario scenario;
  try {
    scenario = sim::parseScenario(input.restAsText(), "f");
  } catch (const std::runtime_error& error) {
    checkProblems(error.what());
    return;
  }
  use(scenario);
}

}  // namespace orb::test
