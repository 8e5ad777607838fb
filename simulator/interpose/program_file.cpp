#include "interpose/program_file.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "interpose/elf_file.h"

namespace orb::sim {
namespace {

constexpr int kMaxInterpreters = 5;  // a script's interpreter may be a script, as deep as in Linux

constexpr const char* kRuntimeNames[] = {"libasan.so",  "libtsan.so",   "liblsan.so",
                                         "libubsan.so", "libhwasan.so", "libclang_rt."};

/// Whether starting the file gives its process rights that the caller lacks: the dynamic loader
/// then ignores LD_PRELOAD.
bool givesRights(const char* path) noexcept {
  struct stat status;
  if (stat(path, &status) != 0) {
    return false;
  }
  const bool otherUser = (status.st_mode & S_ISUID) != 0 && status.st_uid != getuid();
  const bool otherGroup = (status.st_mode & S_ISGID) != 0 && status.st_gid != getgid();
  const bool capabilities = getuid() != 0 && getxattr(path, "security.capability", nullptr, 0) > 0;
  return otherUser || otherGroup || capabilities;
}

bool readInterpreter(const ProgramBytes& bytes, char (&path)[PATH_MAX]) noexcept {
  char line[256] = "";
  bytes.read(0, line, sizeof line - 1);
  if (line[0] != '#' || line[1] != '!') {
    return false;
  }
  const char* const start = line + 2 + std::strspn(line + 2, " \t");
  const std::size_t length = std::strcspn(start, " \t\n");
  std::memcpy(path, start, length);
  path[length] = '\0';
  return true;
}

void addRuntime(ProgramFile& program, const char* name) noexcept {
  const std::size_t used = std::strlen(program.runtimes);
  std::snprintf(program.runtimes + used, sizeof program.runtimes - used, "%s%s",
                used != 0 ? ":" : "", name);
}

ProgramFile inspectElf(const ProgramBytes& bytes) noexcept {
  const ElfFile elf(bytes);
  ProgramFile program;
  if (!elf.isForThisMachine()) {
    program.obstacle = "is built for another machine or word size";
  } else if (!elf.isDynamic()) {
    program.obstacle = "is statically linked";
  } else if (elf.hasNoteOf("Go")) {
    program.obstacle = "is a Go program, which makes system calls without the C library";
  } else {
    elf.forEachLibrary([&](const char* name) {
      if (isSanitizerRuntime(name)) {
        addRuntime(program, name);
      }
    });
  }
  return program;
}

}  // namespace

ProgramFile inspectProgram(const char* path) noexcept {
  const int savedErrno = errno;
  char interpreter[PATH_MAX];
  ProgramFile program;
  for (int depth = 0; depth < kMaxInterpreters; ++depth) {
    const ProgramBytes bytes(path);
    if (readInterpreter(bytes, interpreter)) {
      path = interpreter;
      continue;
    }
    char magic[SELFMAG];
    if (bytes.read(0, magic) && std::memcmp(magic, ELFMAG, SELFMAG) == 0) {
      program = inspectElf(bytes);
    }
    if (givesRights(path)) {
      program.obstacle = "runs with other rights than its caller's";
    }
    break;
  }
  errno = savedErrno;
  return program;
}

bool readInterpreter(const char* script, char (&path)[PATH_MAX]) noexcept {
  return readInterpreter(ProgramBytes(script), path);
}

bool isSanitizerRuntime(std::string_view library) noexcept {
  library.remove_prefix(library.rfind('/') + 1);  // none without a slash
  for (const char* const runtime : kRuntimeNames) {
    if (library.find(runtime) == 0) {
      return true;
    }
  }
  return false;
}

const char* findProgram(const char* name, char (&found)[PATH_MAX]) noexcept {
  if (std::strchr(name, '/') != nullptr) {
    return name;
  }
  const int savedErrno = errno;
  const char* folders = std::getenv("PATH");
  if (folders == nullptr) {
    folders = "/bin:/usr/bin";
  }
  const char* result = name;
  while (result == name) {
    const int length = static_cast<int>(std::strcspn(folders, ":"));
    // An empty entry is the current directory.
    const int size = std::snprintf(found, sizeof found, "%.*s%s%s", length, folders,
                                   length == 0 ? "./" : "/", name);
    struct stat status;
    if (size < PATH_MAX && stat(found, &status) == 0 && S_ISREG(status.st_mode) &&
        access(found, X_OK) == 0) {
      result = found;
    }
    if (folders[length] == '\0') {
      break;
    }
    folders += length + 1;
  }
  errno = savedErrno;
  return result;
}

}  // namespace orb::sim
