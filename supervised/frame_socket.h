#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace orb {

using Deadline = std::chrono::steady_clock::time_point;

constexpr Deadline kNoDeadline = Deadline::max();

/// What is left until `deadline`, for poll(): rounded up, never negative; -1 for none.
int millisecondsUntil(Deadline deadline);

// Frames over a stream socket. Both end, at the latest, at the deadline.

enum class Transfer { Done, Late, Closed };

/// Sends a frame with `bytes`. Throws std::length_error where they are too many.
Transfer sendFrame(int socket, const std::string& bytes, Deadline deadline);

/// Receives a frame into `bytes`. One that is too long counts as closed.
Transfer receiveFrame(int socket, std::string& bytes, Deadline deadline);

}  // namespace orb
