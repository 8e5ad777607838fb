#include "orbctl/inventory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <exception>

#include "base/owned_descriptor.h"
#include "base/plain_text.h"
#include "board/expected_module.h"
#include "orb-gnss/hardware_discovery.h"

namespace orb::ctl {
namespace {

/// Takes what is written to standard error, from construction on.
class TakenErrors {
 public:
  TakenErrors()
      : before_(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)),
        taken_(::memfd_create("errors", MFD_CLOEXEC)) {
    if (before_.isOpen() && taken_.isOpen()) {
      ::dup2(taken_.get(), STDERR_FILENO);
    }
  }
  TakenErrors(const TakenErrors&) = delete;
  TakenErrors& operator=(const TakenErrors&) = delete;
  ~TakenErrors() {
    if (before_.isOpen()) {
      ::dup2(before_.get(), STDERR_FILENO);
    }
  }

  /// The first line.
  std::string line() const {
    char text[1024];
    const ssize_t size = ::pread(taken_.get(), text, sizeof text, 0);
    const std::string whole(text, size < 0 ? 0 : static_cast<std::size_t>(size));
    return whole.substr(0, whole.find('\n'));
  }

 private:
  OwnedDescriptor before_;
  OwnedDescriptor taken_;
};

/// Without the names of library and method: "orb-platform: METHOD of SERVICE: reason".
std::string reasonIn(const std::string& line) {
  const std::size_t first = line.find(": ");
  const std::size_t second = first == std::string::npos ? first : line.find(": ", first + 2);
  return second == std::string::npos ? line : line.substr(second + 2);
}

}  // namespace

Inventory askInventory() {
  const TakenErrors errors;
  try {
    const std::string hardware = plain(getModuleHardwareID(kModuleLocation));
    return {hardware, hardware.empty() ? plain(reasonIn(errors.line())) : ""};
  } catch (const std::exception& error) {
    return {"", error.what()};
  }
}

}  // namespace orb::ctl
