#pragma once

#include <array>

namespace orb {

/// The position fix mask of a fix mode.
struct FixMode {
  const char* first;
  const char* second;
};

/// The fix modes that can be set, by number.
constexpr std::array<FixMode, 3> kFixModes = {{{"2D", "2D"}, {"3D", "3D"}, {"3D", "2D"}}};

}  // namespace orb
