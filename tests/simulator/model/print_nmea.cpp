// Prints what the receiver of a scenario sends in ten seconds: print_nmea SCENARIO (its text)

#include <chrono>
#include <iostream>

#include "orb-sim/scenario.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    return 2;
  }
  orb::sim::Scenario scenario = orb::sim::parseScenario(argv[1], "scenario");
  scenario.talksFromTheStart = true;
  for (const unsigned char byte :
       orb::sim::ScenarioDevice(scenario).tick(std::chrono::milliseconds(10'100))) {
    std::cout.put(static_cast<char>(byte));
  }
}
