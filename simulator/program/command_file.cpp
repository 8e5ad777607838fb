#include "program/command_file.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "interpose/program_file.h"
#include "program/failure.h"

namespace orb::sim {
namespace {

/// The program that a script's first line names; empty where there is none.
std::string interpreterOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string line;
  std::string interpreter;
  if (stream.get() != '#' || stream.get() != '!' || !std::getline(stream, line)) {
    return interpreter;
  }
  std::istringstream(line) >> interpreter;
  return interpreter;
}

}  // namespace

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
  const std::string interpreter = interpreterOf(file);
  if (!interpreter.empty() && access(interpreter.c_str(), F_OK) != 0) {
    throw Failure(name + ": its interpreter " + interpreter + ": " + std::strerror(errno),
                  kExitNotStartable);
  }
  const ProgramFile program = inspectProgram(file.c_str());
  if (program.obstacle != nullptr) {
    throw Failure(
        name + " " + program.obstacle + ": it would use the real device, so it is not started",
        kExitNotStartable);
  }
  return file;
}

}  // namespace orb::sim
