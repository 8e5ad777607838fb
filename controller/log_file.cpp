#include "controller/log_file.h"

#include <fcntl.h>
#include <unistd.h>

#include "base/owned_descriptor.h"

namespace orb {

namespace {

// The C++ library tells a stream's descriptor to derived classes alone.
struct LogBuffer : std::filebuf {
  static int descriptorOf(std::filebuf& buffer) { return (buffer.*&LogBuffer::_M_file).fd(); }
};

}  // namespace

void openLog(std::ofstream& log, const char* path) {
  log.open(path, std::ios::out | std::ios::app | std::ios::ate);
  if (!log.is_open()) {
    return;
  }
  const int descriptor = LogBuffer::descriptorOf(*log.rdbuf());
  if (descriptor > STDERR_FILENO) {
    ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    return;
  }
  log.close();
  // Takes the number while the log is opened anew.
  const OwnedDescriptor inItsPlace(::open("/", O_RDONLY | O_CLOEXEC));
  if (inItsPlace.isOpen()) {
    openLog(log, path);
  }
}

}  // namespace orb
