#include "program/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <string>

#include "base/checked.h"
#include "program/failure.h"

namespace orb::sim {
namespace {

/// Writes out what has been printed. Returns why it is lost; empty where it is not.
std::string lossOfOutput() {
  errno = 0;
  if (std::cout.flush()) {
    return "";
  }
  return std::string("cannot write standard output") +
         (errno != 0 ? std::string(": ") + std::strerror(errno) : "");
}

}  // namespace

void occupyClosedStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) {
      continue;
    }
    // The lowest free number is this stream's. It is opened for what nobody does with it.
    checked(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY), "/dev/null");
  }
}

bool warnOfLostOutput() {
  const std::string loss = lossOfOutput();
  if (loss.empty()) {
    return false;
  }
  std::cerr << "orb-sim: " << loss << "; goes on without it" << std::endl;
  return true;
}

void requireOutput() {
  const std::string loss = lossOfOutput();
  if (!loss.empty()) {
    throw Failure(loss);
  }
}

}  // namespace orb::sim
