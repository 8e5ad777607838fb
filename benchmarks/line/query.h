#pragma once

#include <string>

#include "line/far_end.h"

namespace orb::bench {

/// The answer to the query of the elevation and carrier-to-noise ratio masks.
extern const Bytes kMasksReply;

/// Asks for the masks by way of the library: opens, sends, receives, closes. Throws
/// std::runtime_error where the answer is another.
void queryByLibrary(const std::string& tty);

/// The least that the same can cost: the system calls, and a loop that reads till all is there.
void queryByBareLoop(const std::string& tty);

}  // namespace orb::bench
