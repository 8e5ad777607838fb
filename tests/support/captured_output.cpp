#include "support/captured_output.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace orb::test {

namespace {

int checked(int result, const char* call) {
  if (result < 0) {
    throw std::system_error(errno, std::generic_category(), call);
  }
  return result;
}

}  // namespace

CapturedOutput::CapturedOutput(int descriptor)
    : descriptor_(descriptor),
      original_(checked(fcntl(descriptor, F_DUPFD_CLOEXEC, 0), "fcntl")),
      file_(checked(memfd_create("captured-output", MFD_CLOEXEC), "memfd_create")) {
  checked(dup2(file_, descriptor_), "dup2");
}

CapturedOutput::~CapturedOutput() {
  dup2(original_, descriptor_);
  close(original_);
  close(file_);
}

std::string CapturedOutput::text() const {
  std::string text;
  char part[4096];
  for (long position = taken_;; position = taken_ + static_cast<long>(text.size())) {
    const ssize_t count =
        checked(static_cast<int>(pread(file_, part, sizeof part, position)), "pread");
    if (count == 0) {
      return text;
    }
    text.append(part, static_cast<std::size_t>(count));
  }
}

std::string CapturedOutput::take() {
  const std::string text = this->text();
  taken_ += static_cast<long>(text.size());
  return text;
}

}  // namespace orb::test
