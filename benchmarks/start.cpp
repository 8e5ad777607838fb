// What a program pays before its first call: loading the library and constructing a driver, in a
// fresh process each time.

#include <dlfcn.h>
#include <errno.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include "orb-gnss/module_driver.h"
#include "orb-sim/path_map.h"
#include "support/turns.h"

namespace orb::bench {

namespace {

constexpr const char* kConstructOption = "--construct";

void* checked(void* handle) {
  if (handle == nullptr) {
    throw std::runtime_error(dlerror());
  }
  return handle;
}

// The whole of the fresh process: writes, as a number in memory, the nanoseconds that it took to
// load the library and to have the object constructed by the function of this name. What the driver
// and the trivial object both need is loaded before.
void construct(const char* library, const char* constructor) {
  sim::mapPath("/var/log/orbset-errors.log", "/dev/null");
  checked(dlopen(ORB_PLATFORM_LIBRARY, RTLD_LAZY));
  const auto place = std::make_unique<unsigned char[]>(sizeof(orbController_QN4470T01));

  const double start = threadNanoseconds();
  void* const handle = checked(dlopen(library, RTLD_LAZY));
  reinterpret_cast<void (*)(void*)>(checked(dlsym(handle, constructor)))(place.get());
  const double taken = threadNanoseconds() - start;
  std::_Exit(write(STDOUT_FILENO, &taken, sizeof taken) == sizeof taken ? 0 : EXIT_FAILURE);
}

double inFreshProcess(const std::string& library, const std::string& constructor) {
  const std::string command = std::string("exec '") + program_invocation_name + "' " +
                              kConstructOption + " '" + library + "' " + constructor;
  double nanoseconds = 0;
  std::FILE* const output = popen(command.c_str(), "re");
  const bool isRead =
      output != nullptr && std::fread(&nanoseconds, sizeof nanoseconds, 1, output) == 1;
  if (output == nullptr || pclose(output) != 0 || !isRead) {
    throw std::runtime_error("cannot load " + library);
  }
  return nanoseconds;
}

std::vector<Row> start() {
  constexpr int kTurns = 101;
  constexpr double kMicrosecond = 1000;
  const Turns turns = quietest(takeTimedTurns(
      [] { return inFreshProcess(ORB_GNSS_LIBRARY, "_ZN23orbController_QN4470T01C1Ev"); },
      [] { return inFreshProcess(ORB_TRIVIAL_OBJECT, "constructTrivial"); }, kTurns));
  return {compared({.work = "start",
                    .title = "start: load the library, construct a driver",
                    .unit = "us",
                    .bound = 3},
                   turns, kMicrosecond)};
}

const Work kWorks[] = {{"start", start}};

}  // namespace

}  // namespace orb::bench

int main(int argc, char** argv) {
  if (argc == 4 && argv[1] == std::string(orb::bench::kConstructOption)) {
    orb::bench::construct(argv[2], argv[3]);
  }
  return orb::bench::run(argc, argv, orb::bench::kWorks);
}
