#pragma once

namespace orb {

// What went wrong in a command, as the bits of its result.

constexpr unsigned int kSucceeded = 0;
/// An argument was rejected, or the value read back differs from the one requested.
constexpr unsigned int kRejected = 1;
constexpr unsigned int kNoReply = 4;
constexpr unsigned int kNotSent = 8;
constexpr unsigned int kNotSupported = 256;

}  // namespace orb
