#include "interpose/path_table.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

#include "interpose/descriptor_path.h"
#include "interpose/message.h"
#include "interpose/system_call.h"
#include "orb-sim/path_map.h"

namespace orb::sim {
namespace {

struct PathBuffer {
  std::size_t length = 0;
  char text[PATH_MAX];
};

struct Mapping {
  char from[PATH_MAX];
  char to[PATH_MAX];
  const char* name;  // the last component of `from`
};

Mapping mappings[kMaxMappedPaths];
std::atomic<int> mappingCount{0};

const char* lastComponent(const char* path) noexcept {
  const char* const slash = std::strrchr(path, '/');
  return slash != nullptr ? slash + 1 : path;
}

void dropLastComponent(PathBuffer& path) noexcept {
  while (path.length > 0 && path.text[--path.length] != '/') {
  }
}

/// Appends the components of `path` to `out`, each after a slash; "" stands for the root.
/// False when there is no room.
bool appendComponents(PathBuffer& out, std::string_view path) noexcept {
  while (!path.empty()) {
    const std::size_t length = std::min(path.find('/'), path.size());
    const std::string_view component(path.data(), length);
    path.remove_prefix(std::min(length + 1, path.size()));
    if (component.empty() || component == ".") {
      continue;
    }
    if (component == "..") {
      dropLastComponent(out);
      continue;
    }
    if (out.length + 1 + length >= sizeof out.text) {
      return false;
    }
    out.text[out.length++] = '/';
    std::memcpy(out.text + out.length, component.data(), length);
    out.length += length;
  }
  out.text[out.length] = '\0';
  return true;
}

/// Appends the directory that a relative path starts from. The C library's function for it is among
/// those that are wrapped.
bool appendDirectory(PathBuffer& out, int directory) noexcept {
  const DescriptorPath opened(directory);
  const char* const link = directory == AT_FDCWD ? "/proc/self/cwd" : opened.text;
  char target[PATH_MAX];
  const long length = systemCall(SYS_readlinkat, AT_FDCWD, link, target, sizeof target);
  return length > 0 && appendComponents(out, {target, static_cast<std::size_t>(length)});
}

/// The place of the mapping of `from`, or the number of mappings.
int indexOf(const char* from, int count) noexcept {
  int index = 0;
  while (index < count && std::strcmp(mappings[index].from, from) != 0) {
    ++index;
  }
  return index;
}

const char* findMapped(int directory, const char* path) noexcept {
  PathBuffer absolute;
  const int savedErrno = errno;
  const bool known =
      (path[0] == '/' || appendDirectory(absolute, directory)) && appendComponents(absolute, path);
  errno = savedErrno;
  const int count = mappingCount.load(std::memory_order_acquire);
  const int index = known ? indexOf(absolute.text, count) : count;
  return index < count ? mappings[index].to : path;
}

/// Takes the text up to an unescaped `end` (or the end of the text) off the front of `text`, and
/// the `end` with it.
PathBuffer takeUntil(const char*& text, char end) noexcept {
  PathBuffer taken;
  for (; *text != '\0' && *text != end; ++text) {
    if (*text == '\\' && text[1] != '\0') {
      ++text;
    }
    if (taken.length + 1 == sizeof taken.text) {
      endProcess("a path of ORB_SIM_PATHS is too long");
    }
    taken.text[taken.length++] = *text;
  }
  if (*text == end) {
    ++text;
  }
  taken.text[taken.length] = '\0';
  return taken;
}

}  // namespace

const char* mapped(int directory, const char* path) noexcept {
  if (path == nullptr) {
    return nullptr;
  }
  const int count = mappingCount.load(std::memory_order_acquire);
  // Nearly every call is for another file, which its last component tells.
  const char* const name = lastComponent(path);
  for (int i = 0; i < count; ++i) {
    if (std::strcmp(mappings[i].name, name) == 0) {
      return findMapped(directory, path);
    }
  }
  return path;
}

const char* mapped(const char* path) noexcept { return mapped(AT_FDCWD, path); }

bool isMappedTerminal(int descriptor) noexcept {
  const int savedErrno = errno;
  struct stat opened;
  bool found = false;
  if (fstat(descriptor, &opened) == 0 && S_ISCHR(opened.st_mode)) {
    const int count = mappingCount.load(std::memory_order_acquire);
    for (int i = 0; i < count && !found; ++i) {
      struct stat target;
      found = stat(mappings[i].to, &target) == 0 && S_ISCHR(target.st_mode) &&
              target.st_rdev == opened.st_rdev;
    }
  }
  errno = savedErrno;
  return found;
}

void mapPath(std::string_view from, std::string_view to) noexcept {
  PathBuffer absolute;
  if (from.empty() || from[0] != '/') {
    endProcess("a path to be mapped is not absolute");
  }
  if (to.empty() || to.size() >= PATH_MAX || !appendComponents(absolute, from)) {
    endProcess("a path to be mapped is too long, or its target is empty");
  }
  const int count = mappingCount.load(std::memory_order_relaxed);
  const int index = indexOf(absolute.text, count);
  if (index == kMaxMappedPaths) {
    endProcess("more paths are mapped than there is room for");
  }
  Mapping& mapping = mappings[index];
  std::memcpy(mapping.to, to.data(), to.size());
  mapping.to[to.size()] = '\0';
  std::memcpy(mapping.from, absolute.text, absolute.length + 1);
  mapping.name = lastComponent(mapping.from);
  mappingCount.store(std::max(count, index + 1), std::memory_order_release);
}

void clearPathMap() noexcept { mappingCount.store(0, std::memory_order_release); }

void mapPathsFromText(const char* text) noexcept {
  while (*text != '\0') {
    const PathBuffer from = takeUntil(text, '=');
    const PathBuffer to = takeUntil(text, ':');
    mapPath({from.text, from.length}, {to.text, to.length});
  }
}

}  // namespace orb::sim
