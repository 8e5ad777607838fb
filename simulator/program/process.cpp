#include "program/process.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "line/owned_descriptor.h"

namespace orb::sim {
namespace {

constexpr unsigned kFirstOther = STDERR_FILENO + 1;

std::vector<char*> pointers(const std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (const std::string& text : texts) result.push_back(const_cast<char*>(text.c_str()));
  result.push_back(nullptr);
  return result;
}

void useAs(int descriptor, int standard) {
  if (descriptor >= 0) dup2(descriptor, standard);
}

/// The child's way to exec; made of nothing that a lock of another thread could hold up. Returns
/// only when it fails, with errno set.
void become(const ProcessStart& start, char* const* arguments, char* const* variables,
            pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) raise(SIGKILL);
  if (start.group) setpgid(0, *start.group);
  useAs(start.input, STDIN_FILENO);
  useAs(start.output, STDOUT_FILENO);
  useAs(start.error, STDERR_FILENO);
  if (start.onlyThese) close_range(kFirstOther, ~0U, CLOSE_RANGE_CLOEXEC);
  sigprocmask(SIG_SETMASK, &start.blockedSignals, nullptr);
  execve(start.file.c_str(), arguments, variables);
}

}  // namespace

pid_t startProcess(const ProcessStart& start) {
  const std::vector<char*> arguments = pointers(start.arguments);
  const std::vector<char*> variables = pointers(start.variables);
  Pipe pipe;
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child == 0) {
    become(start, arguments.data(), variables.data(), parent);
    const int error = errno;
    const ssize_t written = write(pipe.writing.get(), &error, sizeof error);
    _exit(written == sizeof error ? 0 : 1);
  }
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  pipe.writing.reset();
  int error = 0;
  if (read(pipe.reading.get(), &error, sizeof error) == sizeof error) {
    waitpid(child, nullptr, 0);
    throw std::system_error(error, std::generic_category(), start.file);
  }
  return child;
}

std::vector<std::string> environmentWith(const std::vector<std::string>& added) {
  std::vector<std::string> result = added;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    const std::string name = text.substr(0, text.find('=') + 1);
    const bool isReplaced = std::any_of(added.begin(), added.end(), [&](const std::string& other) {
      return other.compare(0, name.size(), name) == 0;
    });
    if (!isReplaced) result.push_back(text);
  }
  return result;
}

void leaveInputAndOutput() {
  const OwnedDescriptor nothing(open("/dev/null", O_RDWR | O_CLOEXEC), "/dev/null");
  useAs(nothing.get(), STDIN_FILENO);
  useAs(nothing.get(), STDOUT_FILENO);
}

int shellStatus(int waitStatus) {
  constexpr int kSignalBase = 128;
  return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : kSignalBase + WTERMSIG(waitStatus);
}

}  // namespace orb::sim
