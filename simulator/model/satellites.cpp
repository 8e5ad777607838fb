#include "model/satellites.h"

#include <algorithm>
#include <iterator>

namespace orb::sim {
namespace {

bool isEnabled(const Settings& settings, Constellation constellation) {
  switch (constellation) {
    case Constellation::Qzss:
      return settings.qzss[0] != 0;
    case Constellation::Sbas:
      return settings.sbas[0] != 0;
    default:  // the bits of the others are in their order
      return (settings.constellations >> static_cast<unsigned int>(constellation) & 1U) != 0;
  }
}

/// What interference takes from every satellite, in dB-Hz.
std::uint8_t interferenceLoss(std::uint8_t status) {
  constexpr std::uint8_t kSome = 2;
  constexpr std::uint8_t kCritical = 3;
  return status == kSome ? 6 : status == kCritical ? 20 : 0;
}

bool passes(const ElevationCnrMask& mask, const Satellite& satellite) {
  return mask.mode == 0 || (satellite.elevation >= mask.elevation && satellite.cnr >= mask.cnr);
}

}  // namespace

bool findsSatellites(const State& state) {
  return state.signals && state.antennaSupply &&
         state.startup.untilFix <= std::chrono::milliseconds{0};
}

std::vector<Satellite> satellitesInView(const State& state) {
  std::vector<Satellite> inView;
  if (!findsSatellites(state)) {
    return inView;
  }
  const std::uint8_t loss = interferenceLoss(state.interferenceStatus);
  for (Satellite satellite : state.sky) {
    if (satellite.elevation >= 0 && isEnabled(state, satellite.constellation)) {
      satellite.cnr = static_cast<std::uint8_t>(satellite.cnr - std::min(loss, satellite.cnr));
      inView.push_back(satellite);
    }
  }
  return inView;
}

std::vector<Satellite> satellitesHeard(const State& state) {
  std::vector<Satellite> heard;
  const std::vector<Satellite> inView = satellitesInView(state);
  std::ranges::copy_if(inView, std::back_inserter(heard), [&](const Satellite& satellite) {
    return satellite.cnr != 0 && passes(state.elevationCnrMask, satellite);
  });
  return heard;
}

}  // namespace orb::sim
