#include "program/installation.h"

#include <climits>
#include <initializer_list>
#include <string>

#include "interpose/program_file.h"
#include "program/failure.h"

namespace orb::sim {
namespace {

namespace fs = std::filesystem;

fs::path ownFolder() { return fs::read_symlink("/proc/self/exe").parent_path(); }

/// The first of `places`, relative to the folder of this program, that exists.
fs::path find(std::initializer_list<const char*> places) {
  const fs::path folder = ownFolder();
  for (const char* const place : places) {
    const fs::path file = (folder / place).lexically_normal();
    if (fs::exists(file)) {
      return file;
    }
  }
  throw Failure("the installation is not complete: " + (folder / *places.begin()).string() +
                " is missing");
}

}  // namespace

fs::path preloadLibrary() {
  return find({"../" ORB_SIM_LIBRARY_FOLDER "/orb-gnss/liborb-sim-preload.so",
               "../lib/orb-gnss/liborb-sim-preload.so"});
}

fs::path inventoryService() { return find({"orb-inventoryd"}); }

fs::path scenarioFolder() { return find({"../" ORB_SIM_DATA_FOLDER "/orb-gnss/scenarios"}); }

fs::path documentation(const char* page) {
  return (ownFolder() / ".." / ORB_SIM_DOCUMENTATION_FOLDER / page).lexically_normal();
}

fs::path busDaemon() {
  char found[PATH_MAX];
  for (const char* const name : {"dbus-daemon", "/usr/bin/dbus-daemon"}) {
    const fs::path file = findProgram(name, found);
    if (file.is_absolute() && fs::exists(file)) {
      return file;
    }
  }
  throw Failure("dbus-daemon was not found; on Debian the package dbus-daemon has it");
}

}  // namespace orb::sim
