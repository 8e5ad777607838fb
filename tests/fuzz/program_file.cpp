// What orb-sim looks at in a program before it starts it: any file is judged, and does no harm.
// Input: the file.

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "base/owned_descriptor.h"
#include "interpose/program_file.h"
#include "support/check.h"
#include "support/input.h"

namespace orb::test {
namespace {

/// A file in memory, with a path.
class MemoryFile {
 public:
  void fill(const Bytes& content) const {
    check(::ftruncate(descriptor_.get(), 0) == 0 &&
              ::pwrite(descriptor_.get(), content.data(), content.size(), 0) ==
                  static_cast<ssize_t>(content.size()),
          "the file can be filled");
  }
  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_.get()); }

 private:
  OwnedDescriptor descriptor_{::memfd_create("program", MFD_CLOEXEC), "memfd_create"};
};

}  // namespace

void tryInput(Input input) {
  static const MemoryFile file;
  file.fill(input.rest());
  const sim::ProgramFile program = sim::inspectProgram(file.path().c_str());
  check(std::memchr(program.runtimes, '\0', sizeof program.runtimes) != nullptr,
        "the runtimes are a text");
}

}  // namespace orb::test
