#include "model/solution.h"

namespace orb::sim {

std::optional<Pulses> State::pulses() const {
  constexpr std::uint8_t kWithFix = 1;
  constexpr std::uint8_t kWithSatellite = 2;
  constexpr double kCableDelaysPerNanosecond = 100;
  const Navigation now = solution();
  const bool held = (ppsOutput.mode == kWithFix && now.fixMode == kNoFix) ||
                    (ppsOutput.mode == kWithSatellite && now.satellites == 0);
  if (held || startup.silence > std::chrono::milliseconds{0}) {
    return std::nullopt;
  }
  return Pulses{ppsPulseWidth, alignment(*this) - cableDelay / kCableDelaysPerNanosecond};
}

}  // namespace orb::sim
