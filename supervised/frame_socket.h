#pragma once

#include <chrono>
#include <string>

namespace orb {

using Deadline = std::chrono::steady_clock::time_point;

constexpr Deadline kNoDeadline = Deadline::max();

/// What is left until `deadline`, for poll(): rounded up, never negative; -1 for none.
int millisecondsUntil(Deadline deadline);

// Frames over a socket that keeps their bounds (SOCK_SEQPACKET). Both end, at the latest, at the
// deadline.

enum class Transfer { Done, Late, Closed };

/// Sends a frame with `bytes`, one at least. Throws std::length_error where they are too many.
Transfer sendFrame(int socket, const std::string& bytes, Deadline deadline);

/// Receives a frame into `bytes`. Looks for it without sleeping for the time of `awake` first: a
/// thread that sleeps may take longer to wake up than the other side to answer.
Transfer receiveFrame(int socket, std::string& bytes, Deadline deadline,
                      std::chrono::microseconds awake = {});

}  // namespace orb
