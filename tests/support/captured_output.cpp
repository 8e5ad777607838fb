#include "support/captured_output.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace orb::test {

CapturedOutput::CapturedOutput(int descriptor)
    : descriptor_(descriptor),
      original_(fcntl(descriptor, F_DUPFD_CLOEXEC, 0), "fcntl"),
      file_(memfd_create("captured-output", MFD_CLOEXEC), "memfd_create") {
  checked(dup2(file_.get(), descriptor_), "dup2");
}

CapturedOutput::~CapturedOutput() { dup2(original_.get(), descriptor_); }

std::string CapturedOutput::text() const {
  std::string text;
  char part[4096];
  for (long position = taken_;; position = taken_ + static_cast<long>(text.size())) {
    const ssize_t count =
        checked(static_cast<int>(pread(file_.get(), part, sizeof part, position)), "pread");
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
