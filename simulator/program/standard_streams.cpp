#include "program/standard_streams.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <string>

#include "base/checked.h"
#include "program/failure.h"

namespace orb::sim {

void occupyClosedStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) {
      continue;
    }
    // The lowest free number is this stream's. It is opened for what nobody does with it.
    checked(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY), "/dev/null");
  }
}

void requireOutput() {
  errno = 0;
  if (!std::cout.flush()) {
    throw Failure(std::string("cannot write standard output") +
                  (errno != 0 ? std::string(": ") + std::strerror(errno) : ""));
  }
}

bool remark(const std::string& what) {
  pollfd errors{STDERR_FILENO, POLLOUT, 0};
  if (poll(&errors, 1, 0) != 1) {
    return false;
  }
  std::cerr << "orb-sim: " + what + '\n';
  return true;
}

}  // namespace orb::sim
