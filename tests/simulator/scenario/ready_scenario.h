#pragma once

#include <string>

#include "orb-sim/scenario.h"

namespace orb::test {

/// One of the scenarios that come with the simulator.
inline sim::Scenario readyScenario(const std::string& name) {
  return sim::loadScenario(std::string(ORB_SIM_SCENARIOS) + '/' + name + ".toml");
}

}  // namespace orb::test
