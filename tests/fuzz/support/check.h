#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace orb::test {

/// Ends the run with a finding where something does not hold.
inline void check(bool holds, const std::string& expectation) {
  if (!holds) {
    std::fprintf(stderr, "\nFinding: does not hold: %s\n", expectation.c_str());
    std::abort();
  }
}

/// The same for two values, both of which are shown.
inline void checkEqual(const std::string& found, const std::string& expected,
                       const std::string& what) {
  check(found == expected, what + "\n  found    " + found + "\n  expected " + expected);
}

}  // namespace orb::test
