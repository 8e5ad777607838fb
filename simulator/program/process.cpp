#include "program/process.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include "base/owned_descriptor.h"
#include "base/pipe.h"

namespace orb::sim {
namespace {

namespace fs = std::filesystem;

std::vector<char*> pointers(const std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (const std::string& text : texts) {
    result.push_back(const_cast<char*>(text.c_str()));
  }
  result.push_back(nullptr);
  return result;
}

void leaveAllDescriptors(const char* log) {
  constexpr mode_t kMode = 0600;
  constexpr unsigned int kFirstOther = STDERR_FILENO + 1;
  dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
  dup2(open(log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, kMode), STDOUT_FILENO);
  dup2(STDOUT_FILENO, STDERR_FILENO);
  close_range(kFirstOther, ~0U, CLOSE_RANGE_CLOEXEC);
}

/// The child's way to exec; made of nothing that a lock of another thread could hold up. Returns
/// only when it fails, with errno set.
void become(const ProcessStart& start, char* const* arguments, char* const* variables,
            pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    raise(SIGKILL);
  }
  if (start.group) {
    setpgid(0, *start.group);
  }
  if (!start.log.empty()) {
    leaveAllDescriptors(start.log.c_str());
  }
  sigprocmask(SIG_SETMASK, &start.blockedSignals, nullptr);
  execve(start.file.c_str(), arguments, variables);
}

/// The parent that /proc/PROCESS/stat tells, 0 where there is no such process.
pid_t parentOf(const fs::path& process) {
  std::string text;
  std::getline(std::ifstream(process / "stat"), text, '\0');
  // "PROCESS (NAME) STATE PARENT ...", where NAME may hold anything.
  pid_t parent = 0;
  const std::size_t nameEnd = text.rfind(')');
  if (nameEnd != std::string::npos) {
    std::sscanf(text.c_str() + nameEnd, ") %*c %d", &parent);
  }
  return parent;
}

std::vector<pid_t> children() {
  std::vector<pid_t> result;
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc", ignored)) {
    if (parentOf(entry.path()) == getpid()) {
      result.push_back(std::atoi(entry.path().filename().c_str()));
    }
  }
  return result;
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
  checked(child, "fork");
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
    if (!isReplaced) {
      result.push_back(text);
    }
  }
  return result;
}

void leaveInputAndOutput() {
  const OwnedDescriptor nothing(open("/dev/null", O_RDWR | O_CLOEXEC), "/dev/null");
  dup2(nothing.get(), STDIN_FILENO);
  dup2(nothing.get(), STDOUT_FILENO);
}

int shellStatus(int waitStatus) {
  constexpr int kSignalBase = 128;
  return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : kSignalBase + WTERMSIG(waitStatus);
}

void adoptOrphans() { checked(prctl(PR_SET_CHILD_SUBREAPER, 1), "PR_SET_CHILD_SUBREAPER"); }

void endAllChildren() noexcept {
  bool someEnded = true;
  while (someEnded) {
    someEnded = false;
    for (const pid_t child : children()) {
      if (kill(child, SIGKILL) != 0) {
        continue;
      }
      while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
      }
      someEnded = true;
    }
  }
}

}  // namespace orb::sim
