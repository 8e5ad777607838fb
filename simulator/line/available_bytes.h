#pragma once

#include <optional>

#include "orb-sim/bytes.h"

namespace orb::sim {

// Reading and writing of descriptors that do not block.

/// What can be read now: empty when there is nothing, no value when the other end has gone.
std::optional<Bytes> readAvailable(int descriptor);

/// Writes as many of the bytes, from the first on, as there is room for, and takes them out of
/// `bytes`. Returns false when the other end has gone.
bool writeAvailable(int descriptor, Bytes& bytes);

}  // namespace orb::sim
