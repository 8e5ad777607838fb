#pragma once

#include <string>

#include "support/sample_bytes.h"

namespace orb::bench {

/// The least that an exchange can cost: the system calls, and a loop that reads till all is there.
/// Returns whether the answer is this.
bool exchangeByBareLoop(const std::string& tty, const Bytes& query, const Bytes& answer);

}  // namespace orb::bench
