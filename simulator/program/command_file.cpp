#include "program/command_file.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <string>

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
  char interpreter[PATH_MAX] = "";
  const bool isScript = readInterpreter(file.c_str(), interpreter) && interpreter[0] != '\0';
  if (isScript && access(interpreter, F_OK) != 0) {
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
