#include "program/process_tree.h"

#include <dirent.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <system_error>
#include <vector>

namespace orb::sim {
namespace {

struct CloseStream {
  void operator()(FILE* stream) const { std::fclose(stream); }
};

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};

/// The parent that /proc/PROCESS/stat tells, 0 where there is no such process.
pid_t parentOf(const char* process) {
  char path[64];
  std::snprintf(path, sizeof path, "/proc/%.20s/stat", process);
  const std::unique_ptr<FILE, CloseStream> stream(std::fopen(path, "re"));
  char line[512] = "";
  if (!stream || std::fgets(line, sizeof line, stream.get()) == nullptr) return 0;
  // "PROCESS (NAME) STATE PARENT ...", where NAME may hold anything.
  const char* const nameEnd = std::strrchr(line, ')');
  pid_t parent = 0;
  if (nameEnd != nullptr) std::sscanf(nameEnd + 1, " %*c %d", &parent);
  return parent;
}

std::vector<pid_t> children() {
  std::vector<pid_t> result;
  const std::unique_ptr<DIR, CloseFolder> folder(opendir("/proc"));
  if (!folder) return result;
  while (const dirent* const entry = readdir(folder.get())) {
    const char* const end = entry->d_name + std::strlen(entry->d_name);
    pid_t process = 0;
    const bool isProcess = std::from_chars(entry->d_name, end, process).ptr == end;
    if (isProcess && parentOf(entry->d_name) == getpid()) result.push_back(process);
  }
  return result;
}

}  // namespace

void adoptOrphans() {
  if (prctl(PR_SET_CHILD_SUBREAPER, 1) != 0) {
    throw std::system_error(errno, std::generic_category(), "PR_SET_CHILD_SUBREAPER");
  }
}

void endAllChildren() noexcept {
  bool someEnded = true;
  while (someEnded) {
    someEnded = false;
    for (const pid_t child : children()) {
      if (kill(child, SIGKILL) != 0) continue;
      while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
      }
      someEnded = true;
    }
  }
}

}  // namespace orb::sim
