#pragma once

#include <climits>
#include <string_view>

namespace orb::sim {

/// What is to be known about a program file before it is started.
struct ProgramFile {
  /// Why the wrappers cannot be loaded into the program, as the end of "PROGRAM ..."; null where
  /// they can, and where the file cannot be read.
  const char* obstacle = nullptr;

  /// The sanitizer runtimes that the program needs, separated by colons. Their place is before
  /// every other preloaded library. A program that has its runtime linked in statically needs none.
  char runtimes[512] = "";
};

/// Looks into the file at `path`: a program, or a script, which stands for its interpreter.
ProgramFile inspectProgram(const char* path) noexcept;

/// Reads the interpreter's path from a script's first line into `path`. False where the file is no
/// script.
bool readInterpreter(const char* script, char (&path)[PATH_MAX]) noexcept;

/// Whether a library of this name or path is a sanitizer's runtime.
bool isSanitizerRuntime(std::string_view library) noexcept;

/// The file that a shell would start for `name`: looked up in PATH unless `name` has a slash.
/// Returns `found`, or `name` itself where the look-up finds nothing.
const char* findProgram(const char* name, char (&found)[PATH_MAX]) noexcept;

}  // namespace orb::sim
