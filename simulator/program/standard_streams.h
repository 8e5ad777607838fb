#pragma once

namespace orb::sim {

/// Puts /dev/null in the place of standard input, output and error where they are closed, so that
/// no other descriptor takes their numbers. As on a closed one, reading and writing fail.
void occupyClosedStreams();

/// Writes out what has been printed. Throws Failure where it is lost.
void requireOutput();

}  // namespace orb::sim
