#pragma once

#include "orb-sim/frame.h"
#include "support/hex_text.h"

namespace orb::test {

/// The query of the update rate, and what a receiver with its default settings answers.
inline const sim::Bytes kRateQuery = sim::frame(0x1000);
inline const sim::Bytes kRateAnswer = sim::acknowledge(0x1000) + sim::frame(0x8600, {1});

}  // namespace orb::test
