#pragma once

namespace orb::sim {

/// Puts /dev/null in the place of standard input, output and error where they are closed, so that
/// no other descriptor takes their numbers. As on a closed one, reading and writing fail.
void occupyClosedStreams();

/// Writes out what has been printed. Returns whether it is lost, and says so on standard error.
bool warnOfLostOutput();

/// Throws Failure where what has been printed is lost.
void requireOutput();

}  // namespace orb::sim
