#pragma once

#include <string>

#include "orb-sim/scenario.h"

namespace orb::sim::test {

/// One of the scenarios that come with the simulator.
inline Scenario readyScenario(const std::string& name) {
  return loadScenario(std::string(ORB_SIM_SCENARIOS) + '/' + name + ".toml");
}

}  // namespace orb::sim::test
