#pragma once

#include <string>

namespace orb::sim {

/// Puts /dev/null in the place of standard input, output and error where they are closed, so that
/// no other descriptor takes their numbers. As on a closed one, reading and writing fail.
void occupyClosedStreams();

/// Writes out what has been printed. Throws Failure where it is lost.
void requireOutput();

/// Says so on standard error, unless that would wait for its reader. Returns whether it has.
bool remark(const std::string& what);

}  // namespace orb::sim
