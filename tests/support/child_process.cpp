#include "support/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <thread>
#include <utility>

namespace orb::test {
namespace {

constexpr std::chrono::seconds kPatience{10};
constexpr std::chrono::milliseconds kLookInterval{5};
constexpr int kCannotRun = 127;
constexpr int kSignalled = 128;

[[noreturn]] void become(char** arguments, const char* outputFile, pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(kCannotRun);  // The parent died before its death could be noticed.
  }
  const int output = open(outputFile, O_WRONLY | O_CREAT | O_APPEND, 0600);
  if (output >= 0) {
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    execvp(arguments[0], arguments);
    std::perror(arguments[0]);
  }
  _exit(kCannotRun);
}

int exitStatus(int waitStatus) {
  return WIFSIGNALED(waitStatus) ? kSignalled + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           std::filesystem::path outputFile)
    : outputFile_(std::move(outputFile)) {
  std::vector<char*> arguments;
  for (const std::string& argument : command) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (pid_ == 0) {
    become(arguments.data(), outputFile_.c_str(), parent);
  }
}

ChildProcess::~ChildProcess() { stop(); }

int ChildProcess::stop() {
  if (!status_) {
    kill(pid_, SIGTERM);
    if (!wait(kPatience)) {
      kill(pid_, SIGKILL);
      while (!wait(kPatience)) {
      }
    }
  }
  return *status_;
}

std::optional<int> ChildProcess::wait(std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!status_) {
    int waitStatus = 0;
    if (waitpid(pid_, &waitStatus, WNOHANG) == pid_) {
      status_ = exitStatus(waitStatus);
    } else if (std::chrono::steady_clock::now() >= deadline) {
      break;
    } else {
      std::this_thread::sleep_for(kLookInterval);
    }
  }
  return status_;
}

}  // namespace orb::test
