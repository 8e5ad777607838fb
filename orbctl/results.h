#pragma once

#include <string>
#include <vector>

#include "orbctl/failure.h"

namespace orb::ctl {

/// Each bit of an operation's result in words, lowest first; bits that no operation has are named
/// as unknown.
std::vector<std::string> explainResult(unsigned int result);

/// What a mask of several bits comes to, where that is more than its bits; else empty.
std::string explainCombination(unsigned int result);

/// The exit status for a result that is not 0: what kept the operation from the receiver counts
/// more than what came of it.
ExitStatus exitStatusFor(unsigned int result);

}  // namespace orb::ctl
