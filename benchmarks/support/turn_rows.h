#pragma once

#include <string>

#include "support/turns.h"
#include "support/work.h"

namespace orb::bench {

/// The row of a work that takes at most `bound` times the limit's time. `units` of `unit` are done
/// in each call, 38 frames for instance, so that the row tells nanoseconds a frame.
Row timeRow(std::string work, std::string title, const Turns& times, double bound, double units = 1,
            const std::string& unit = "call");

/// The row of a work that gets through `bytes` bytes in each call, with at least `bound` of the
/// limit's speed.
Row speedRow(std::string work, std::string title, const Turns& times, double bound, double bytes);

}  // namespace orb::bench
