#include "program/pulse_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <utility>

namespace orb::sim {

PulseFile::PulseFile(std::filesystem::path file) : path_(std::move(file)) {
  open();
  if (!file_.isOpen() && errno != ENXIO) {
    checked(-1, path_.string());
  }
}

// A FIFO without a reader cannot be opened (ENXIO), and is tried again with each line.
void PulseFile::open() {
  file_ = OwnedDescriptor(
      ::open(path_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666));
}

// A line is short enough for a FIFO to take it whole or not at all. SIGPIPE is blocked in the
// threads that serve a line.
void PulseFile::append(const PulseEvent& event) {
  if (!file_.isOpen()) {
    open();
  }
  const std::string line = textOf(event) + '\n';
  if (!file_.isOpen() || ::write(file_.get(), line.data(), line.size()) >= 0) {
    return;
  }
  if (errno == EPIPE) {
    file_.reset();
  } else if (errno != EAGAIN && !std::exchange(hasComplained_, true)) {
    std::cerr << "orb-sim: cannot write " + path_.string() + ": " + std::strerror(errno) + '\n';
  }
}

}  // namespace orb::sim
