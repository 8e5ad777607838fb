#include "supervised/child_handle.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace orb {

ChildHandle::ChildHandle(pid_t process) : process_(process) {
  // Not every C library declares these calls for C++.
  const OwnedDescriptor opened(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
  // Throws nothing: the child runs already, and can be known by its number.
  descriptor_ = OwnedDescriptor(::fcntl(opened.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

bool ChildHandle::hasEnded() const {
  siginfo_t child{};
  const int failed =
      descriptor_.isOpen()
          ? ::waitid(P_PIDFD, static_cast<id_t>(descriptor_.get()), &child, WEXITED | WNOHANG)
          : ::waitid(P_PID, static_cast<id_t>(process_), &child, WEXITED | WNOHANG);
  return failed != 0 || child.si_pid != 0;
}

void ChildHandle::kill() const {
  if (descriptor_.isOpen()) {
    ::syscall(SYS_pidfd_send_signal, descriptor_.get(), SIGKILL, nullptr, 0);
  } else {
    ::kill(process_, SIGKILL);
  }
}

}  // namespace orb
