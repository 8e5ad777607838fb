#pragma once

#include <string>
#include <vector>

namespace orb::test {

/// Whether a process may trace another here; some containers forbid it.
bool tracingIsPermitted();

/// The system calls of a program, traced by strace: for each stretch between two marks, the calls
/// of the program's first thread in order. A call is named as the kernel names it; an ioctl is
/// followed by its request. Looks at a line that has nothing to give, sleeps and yields are left
/// out.
///
/// Throws std::runtime_error where the program or strace fails.
std::vector<std::vector<std::string>> tracedCalls(const std::string& program);

}  // namespace orb::test
