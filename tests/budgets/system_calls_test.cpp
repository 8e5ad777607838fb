// How many system calls an exchange takes: exactly those that it cannot do without.

#include <gmock/gmock.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "marks.h"
#include "support/child_process.h"
#include "support/temporary_folder.h"

namespace orb::test {
namespace {

using testing::Contains;
using testing::Le;
using testing::SizeIs;

using Calls = std::vector<std::string>;

// "ioctl(5, TCFLSH, TCIOFLUSH) = 0": the name, and the second argument. Other devices have given a
// second name to some requests: "SNDCTL_TMR_START or TCSETS".
const std::regex& callPattern() {
  static const std::regex pattern(R"(^(\w+)\((?:[^,)]*, (?:\w+ or )?(\w+))?.*$)");
  return pattern;
}

// A look at a line that has nothing to give, or a pause after it.
bool isEmptyLook(const std::string& line) {
  static const std::regex pattern(R"(^read\(.*= -1 EAGAIN.*|^(clock_nanosleep|sched_yield)\(.*)");
  return std::regex_match(line, pattern);
}

// A reply is waited for from the end of its query to the read that brings it.
bool isWaitingAfter(const std::string& line, bool wasWaiting) {
  return line.starts_with("fsync(") || (wasWaiting && !line.starts_with("read("));
}

// The C library asks for the settings in their older or newer form.
std::string withoutForm(std::string request) {
  if (request.ends_with('2')) {
    request.pop_back();
  }
  return request;
}

std::string nameOf(const std::string& line) {
  std::smatch call;
  if (!std::regex_match(line, call, callPattern())) {
    throw std::runtime_error("strace wrote: " + line);
  }
  return call[1] == "ioctl" ? "ioctl " + withoutForm(call[2]) : call[1].str();
}

std::string traceOf(const std::string& program) {
  const TemporaryFolder folder;
  const std::string trace = folder / "trace";
  ChildProcess strace({"strace", "-qq", "-e", "signal=none", "-o", trace, program},
                      folder / "output");
  if (strace.wait(std::chrono::seconds(30)) != 0) {
    throw std::runtime_error("under strace: " + strace.output());
  }
  return contentOf(trace);
}

/// Whether a process may trace another here; some containers forbid it.
bool tracingIsPermitted() {
  const pid_t child = fork();
  if (child == 0) {
    _exit(ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 ? 0 : 1);
  }
  int status = 1;
  return waitpid(child, &status, 0) == child && status == 0;
}

/// The system calls of a program, traced by strace: for each stretch between two marks, the calls
/// of the program's first thread in order. A call is named as the kernel names it; an ioctl is
/// followed by its request. What a wait for a reply is made of is left out: between an fsync and
/// the next read that brings bytes, the looks at a line that has nothing to give, sleeps and
/// yields.
std::vector<Calls> tracedCalls(const std::string& program) {
  const std::string begin = "write(" + std::to_string(kMarkDescriptor) + ", \"<\"";
  const std::string end = "write(" + std::to_string(kMarkDescriptor) + ", \">\"";
  std::vector<Calls> stretches;
  bool isInside = false;
  bool isWaiting = false;
  std::istringstream trace(traceOf(program));
  for (std::string line; std::getline(trace, line);) {
    if (line.starts_with(begin)) {
      stretches.emplace_back();
      isInside = true;
      isWaiting = false;
    } else if (line.starts_with(end)) {
      isInside = false;
    } else if (isInside && !(isWaiting && isEmptyLook(line))) {
      isWaiting = isWaitingAfter(line, isWaiting);
      stretches.back().push_back(nameOf(line));
    }
  }
  return stretches;
}

// The C library's tcsetattr makes one to three calls, as its version wants it.
TEST(SystemCalls, OfAQueryAreThoseOfABareLoop) {
  if (!tracingIsPermitted()) {
    GTEST_SKIP() << "no process may trace another in this container";
  }
  const auto queries = tracedCalls(ORB_QUERIES_TO_TRACE);
  ASSERT_THAT(queries, SizeIs(2 * kTracedTurns));
  const Calls& byLoop = queries.back();
  const Calls& byLibrary = queries[queries.size() - 2];
  EXPECT_EQ(byLibrary, byLoop);
  for (const char* const call :
       {"openat", "fcntl", "ioctl TCFLSH", "ioctl TCSETS", "write", "fsync", "read", "close"}) {
    EXPECT_THAT(byLoop, Contains(call).Times(1));
  }
  EXPECT_THAT(byLoop, SizeIs(Le(11)));
}

}  // namespace
}  // namespace orb::test
