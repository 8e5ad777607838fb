// What makes the wrappers a library for LD_PRELOAD: they are set up from the environment.

#include <dlfcn.h>

#include <cstdlib>

#include "interpose/child_environment.h"
#include "interpose/i2c_device.h"
#include "interpose/path_table.h"

namespace {

[[gnu::constructor]] void setUp() noexcept {
  const char* const paths = std::getenv("ORB_SIM_PATHS");
  Dl_info self;
  if (paths == nullptr || dladdr(reinterpret_cast<void*>(&setUp), &self) == 0) {
    return;
  }
  orb::sim::mapPathsFromText(paths);
  const char* const bus = std::getenv("ORB_SIM_I2C");
  if (bus != nullptr) {
    orb::sim::setI2cBus(bus);
  }
  orb::sim::keepEnvironment(self.dli_fname);
}

}  // namespace
