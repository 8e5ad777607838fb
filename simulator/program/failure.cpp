#include "program/failure.h"

#include <iostream>
#include <sstream>

namespace orb::sim {

int report(const std::exception& error) {
  std::istringstream lines(error.what());
  for (std::string line; std::getline(lines, line);) {
    std::cerr << "orb-sim: " << line << '\n';
  }
  const auto* const failure = dynamic_cast<const Failure*>(&error);
  return failure != nullptr ? failure->status() : kExitOwnFailure;
}

void warnOfCutTrace(const std::string& name) {
  std::cerr << "orb-sim: " << name << ": the last line is cut off, and left out\n";
}

}  // namespace orb::sim
