#include "program/command_file.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <iostream>

#include "interpose/program_file.h"
#include "program/failure.h"

namespace orb::sim {

std::filesystem::path commandFile(const std::string& name) {
  char found[PATH_MAX];
  const std::filesystem::path file = findProgram(name.c_str(), found);
  if (name.empty() || file.string().find('/') == std::string::npos) {
    throw Failure("command not found: " + name, kExitNotFound);
  }
  if (access(file.c_str(), F_OK) != 0) {
    throw Failure(name + ": " + std::strerror(errno), kExitNotFound);
  }
  if (std::filesystem::is_directory(file)) {
    throw Failure(name + " is a directory", kExitNotStartable);
  }
  if (access(file.c_str(), X_OK) != 0) {
    throw Failure(name + " is not executable", kExitNotStartable);
  }
  const ProgramFile program = inspectProgram(file.c_str());
  if (program.obstacle != nullptr) {
    throw Failure(
        name + " " + program.obstacle + ": it would use the real device, so it is not started",
        kExitNotStartable);
  }
  if (program.gap != nullptr) std::cerr << "orb-sim: " << name << ' ' << program.gap << '\n';
  return file;
}

}  // namespace orb::sim
