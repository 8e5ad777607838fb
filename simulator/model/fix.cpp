#include "model/fix.h"

#include <algorithm>
#include <array>

namespace orb::sim {
namespace {

bool passes(const DopMask& mask, const Dilution& dilution) {
  const std::array<double, 3> dops{dilution.position, dilution.horizontal, dilution.geometric};
  return mask.mode == 0 || std::equal(dops.begin(), dops.end(), mask.limits.begin(),
                                      [](double dop, int limit) { return dop * 10 <= limit; });
}

std::optional<Fix> positionFix(const std::vector<Satellite>& ranging, const State& state) {
  if (const auto dilution = dilutionIn3d(ranging)) {
    return Fix{kFixIn3d, *dilution};
  }
  const FixNavMask& mask = state.fixNavMask;
  const bool flatFixWillDo = (state.startup.hasHadFix ? mask.second : mask.first) != 0;
  const auto dilution = flatFixWillDo ? dilutionIn2d(ranging) : std::nullopt;
  return dilution ? std::optional(Fix{kFixIn2d, *dilution}) : std::nullopt;
}

}  // namespace

std::optional<Fix> fixFrom(const std::vector<Satellite>& ranging, const State& state) {
  const std::optional<Fix> fix = positionFix(ranging, state);
  if (state.runningTimingMode() == TimingMode::Static && !ranging.empty()) {
    // The place is known, and one satellite tells the time.
    return Fix{kFixIn3d, fix ? fix->dilution : dilutionOfTime(ranging)};
  }
  return fix && passes(state.dopMask, fix->dilution) ? fix : std::nullopt;
}

}  // namespace orb::sim
