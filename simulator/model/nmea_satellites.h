#pragma once

#include <string>
#include <vector>

#include "model/solution.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// The GSA sentences of a solution, one for each constellation that it uses; `talker` is that of
/// the whole solution.
std::string gsaSentences(const Solution& solution, const std::string& talker);

/// The GSV sentences of the satellites in view, with a talker of each constellation's own.
std::string gsvSentences(const State& state);

}  // namespace orb::sim
