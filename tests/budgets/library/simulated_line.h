#pragma once

#include <chrono>

namespace orb::test {

/// The mask of the carrier-to-noise ratio that each reply tells.
constexpr unsigned int kSimulatedCnrMask = 20;

/// The receiver's tty in a program that has this file: there is none, and the system calls that the
/// library makes for it and while it waits end in the program, so that an exchange is the same each
/// time and takes no time. Every packet that is written is answered with the receiver's masks,
/// which come in two pieces.
///
/// From now on the first piece comes once so many looks have found nothing and the waiting thread
/// has slept for so long; the second is there for the next look. One thread.
void delayReplies(int emptyLooks, std::chrono::nanoseconds slept);

}  // namespace orb::test
