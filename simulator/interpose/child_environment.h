#pragma once

#include <alloca.h>

#include <cstddef>

namespace orb::sim {

/// Keeps this process's own settings for its children: the place of the preloaded library, the
/// path map, the I2C bus and the system bus's address. To be called once, before main.
///
/// In the process itself, LD_PRELOAD then names no sanitizer runtime any more: this one has its
/// runtime already, and a child that needs one is given it by name.
void keepEnvironment(const char* library) noexcept;

/// Whether `variables` has all that keepEnvironment kept. The path map and the I2C bus are those of
/// this process, unless `variables` belong to a run of orb-sim within this one.
bool isComplete(char* const* variables) noexcept;

/// Room for the longest LD_PRELOAD entry that is made for a child.
struct PreloadEntry {
  char text[8192];
};

/// How many pointers `completeEnvironment` may write.
std::size_t completeSize(char* const* given) noexcept;

/// Writes to `out` the environment for starting the file `program` with the variables `given`:
/// the kept settings are put back where isComplete() misses them, and the sanitizer runtimes that
/// the program needs stand first in LD_PRELOAD. What points to `entry` is part of the result.
/// Allocates nothing: it may run in the child of a vfork. Names a program that cannot be held on
/// standard error.
void completeEnvironment(const char* program, char* const* given, PreloadEntry& entry,
                         const char** out) noexcept;

/// Calls `start(variables)` with the completed environment, and returns what it returns.
template <typename Start>
auto withCompleteEnvironment(const char* program, char* const* given, Start start) noexcept {
  PreloadEntry entry;
  auto** const out = static_cast<const char**>(alloca(completeSize(given) * sizeof(const char*)));
  completeEnvironment(program, given, entry, out);
  return start(const_cast<char**>(out));
}

}  // namespace orb::sim
