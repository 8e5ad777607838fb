#pragma once

namespace orb {

// The worker's descriptors after its standard ones.

/// On which it is asked.
constexpr int kWorkerSocket = 3;
/// A pipe that nobody writes to, and whose other end closes when the client ends.
constexpr int kWorkerLifeline = 4;

}  // namespace orb
