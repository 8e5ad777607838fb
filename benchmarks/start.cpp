// What a program pays before its first call: loading the library and constructing a driver, in a
// fresh process each time.

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/pipe.h"
#include "orb-gnss/module_driver.h"
#include "orb-sim/path_map.h"
#include "support/turn_rows.h"

namespace {

using orb::bench::Row;

constexpr const char* kConstructOption = "--construct";

void* checked(void* handle) {
  if (handle == nullptr) {
    throw std::runtime_error(dlerror());
  }
  return handle;
}

// The whole of the fresh process: writes, as a number in memory, the nanoseconds that it took to
// load the library and to have the object constructed by the function of this name. What both need
// is loaded before.
void construct(const char* library, const char* constructor) {
  orb::sim::mapPath("/var/log/orbset-errors.log", "/dev/null");
  checked(dlopen(ORB_PLATFORM_LIBRARY, RTLD_LAZY));
  const auto place = std::make_unique<unsigned char[]>(sizeof(orbController_QN4470T01));

  const double start = orb::bench::threadNanoseconds();
  void* const handle = checked(dlopen(library, RTLD_LAZY));
  reinterpret_cast<void (*)(void*)>(checked(dlsym(handle, constructor)))(place.get());
  const double taken = orb::bench::threadNanoseconds() - start;
  std::_Exit(write(STDOUT_FILENO, &taken, sizeof taken) == sizeof taken ? 0 : EXIT_FAILURE);
}

double inFreshProcess(const std::string& library, const std::string& constructor) {
  orb::Pipe output;
  const pid_t process = fork();
  if (process == 0) {
    dup2(output.writing.get(), STDOUT_FILENO);
    execl("/proc/self/exe", "bench_start", kConstructOption, library.c_str(), constructor.c_str(),
          nullptr);
    _exit(EXIT_FAILURE);
  }
  output.writing.reset();
  double nanoseconds = 0;
  const bool isRead =
      read(output.reading.get(), &nanoseconds, sizeof nanoseconds) == sizeof nanoseconds;
  int status = 0;
  if (process < 0 || waitpid(process, &status, 0) != process || status != 0 || !isRead) {
    throw std::runtime_error("cannot load " + library);
  }
  return nanoseconds;
}

std::vector<Row> start() {
  constexpr int kTurns = 101;
  constexpr double kMicrosecond = 1000;
  const orb::bench::Turns times = orb::bench::takeTimedTurns(
      [] { return inFreshProcess(ORB_GNSS_LIBRARY, "_ZN23orbController_QN4470T01C1Ev"); },
      [] { return inFreshProcess(ORB_TRIVIAL_OBJECT, "constructTrivial"); }, kTurns);
  Row row = timeRow("start", "start: load the library, construct a driver", times, 3, kMicrosecond);
  row.unit = "us";
  return {row};
}

const orb::bench::Work kWorks[] = {{"start", start}};

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && argv[1] == std::string(kConstructOption)) {
    construct(argv[2], argv[3]);
  }
  return orb::bench::runWorks(argc, argv, kWorks);
}
