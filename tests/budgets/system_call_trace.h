#pragma once

#include <string>
#include <vector>

namespace orb::test {

/// Whether a process may trace another here; some containers forbid it.
bool tracingIsPermitted();

/// The system calls of a program, traced by strace: for each stretch between two marks, the calls
/// of the program's first thread in order. A call is named as the kernel names it; an ioctl is
/// followed by its request. What a wait for a reply is made of is left out: between an fsync and
/// the next read that brings bytes, the looks at a line that has nothing to give, sleeps and
/// yields.
///
/// Throws std::runtime_error where the program or strace fails.
std::vector<std::vector<std::string>> tracedCalls(const std::string& program);

}  // namespace orb::test
