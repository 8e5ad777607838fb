// The functions that start a program: it gets the settings that keep it on the simulated device,
// whatever environment its parent gives it.

#include <spawn.h>
#include <stdlib.h>
#include <unistd.h>

#include <climits>
#include <cstdarg>
#include <cstdio>

#include "interpose/child_environment.h"
#include "interpose/descriptor_path.h"
#include "interpose/program_file.h"
#include "interpose/wrap.h"

using orb::sim::callNext;
using orb::sim::DescriptorPath;
using orb::sim::findProgram;
using orb::sim::withCompleteEnvironment;

namespace {

/// Calls `start(argv, rest)` with the arguments of an execl as an array, and with what follows
/// their null.
template <typename Start>
int withArguments(const char* first, va_list& arguments, Start start) noexcept {
  va_list counted;
  va_copy(counted, arguments);
  std::size_t count = 1;
  while (va_arg(counted, const char*) != nullptr) {
    ++count;
  }
  va_end(counted);
  auto** const argv = static_cast<const char**>(alloca((count + 1) * sizeof(const char*)));
  argv[0] = first;
  for (std::size_t i = 1; i <= count; ++i) {
    argv[i] = va_arg(arguments, const char*);
  }
  return start(const_cast<char**>(argv), arguments);
}

/// Calls `run` while the process's environment has what a child must see. A program may have
/// cleared it; the C library's own functions hand it to the shell as it is.
template <typename Run>
auto withOwnEnvironmentComplete(Run run) noexcept {
  if (orb::sim::isComplete(environ)) {
    return run();
  }
  char** const cleared = environ;
  return withCompleteEnvironment("/bin/sh", cleared, [&](char** variables) {
    environ = variables;
    const auto result = run();
    environ = cleared;
    return result;
  });
}

}  // namespace

ORB_SIM_WRAPPER int execve(const char* path, char* const argv[], char* const envp[]) noexcept {
  return withCompleteEnvironment(path, envp, [&](char** variables) {
    return callNext<"execve", decltype(::execve)>(path, argv, variables);
  });
}

ORB_SIM_WRAPPER int execv(const char* path, char* const argv[]) noexcept {
  return execve(path, argv, environ);
}

ORB_SIM_WRAPPER int execvpe(const char* name, char* const argv[], char* const envp[]) noexcept {
  char found[PATH_MAX];
  return withCompleteEnvironment(findProgram(name, found), envp, [&](char** variables) {
    return callNext<"execvpe", decltype(::execvpe)>(name, argv, variables);
  });
}

ORB_SIM_WRAPPER int execvp(const char* name, char* const argv[]) noexcept {
  return execvpe(name, argv, environ);
}

ORB_SIM_WRAPPER int execl(const char* path, const char* first, ...) noexcept {
  va_list arguments;
  va_start(arguments, first);
  const int result = withArguments(
      first, arguments, [&](char** argv, va_list&) { return execve(path, argv, environ); });
  va_end(arguments);
  return result;
}

ORB_SIM_WRAPPER int execle(const char* path, const char* first, ...) noexcept {
  va_list arguments;
  va_start(arguments, first);
  const int result = withArguments(first, arguments, [&](char** argv, va_list& rest) {
    return execve(path, argv, va_arg(rest, char* const*));
  });
  va_end(arguments);
  return result;
}

ORB_SIM_WRAPPER int execlp(const char* name, const char* first, ...) noexcept {
  va_list arguments;
  va_start(arguments, first);
  const int result = withArguments(
      first, arguments, [&](char** argv, va_list&) { return execvpe(name, argv, environ); });
  va_end(arguments);
  return result;
}

ORB_SIM_WRAPPER int fexecve(int descriptor, char* const argv[], char* const envp[]) noexcept {
  return withCompleteEnvironment(DescriptorPath(descriptor).text, envp, [&](char** variables) {
    return callNext<"fexecve", decltype(::fexecve)>(descriptor, argv, variables);
  });
}

ORB_SIM_WRAPPER int execveat(int directory, const char* path, char* const argv[],
                             char* const envp[], int flags) noexcept {
  return withCompleteEnvironment(DescriptorPath(directory, path).text, envp, [&](char** variables) {
    return callNext<"execveat", decltype(::execveat)>(directory, path, argv, variables, flags);
  });
}

ORB_SIM_WRAPPER int posix_spawn(pid_t* process, const char* path,
                                const posix_spawn_file_actions_t* actions,
                                const posix_spawnattr_t* attributes, char* const argv[],
                                char* const envp[]) {
  return withCompleteEnvironment(path, envp, [&](char** variables) {
    return callNext<"posix_spawn", decltype(::posix_spawn)>(process, path, actions, attributes,
                                                            argv, variables);
  });
}

ORB_SIM_WRAPPER int posix_spawnp(pid_t* process, const char* name,
                                 const posix_spawn_file_actions_t* actions,
                                 const posix_spawnattr_t* attributes, char* const argv[],
                                 char* const envp[]) {
  char found[PATH_MAX];
  return withCompleteEnvironment(findProgram(name, found), envp, [&](char** variables) {
    return callNext<"posix_spawnp", decltype(::posix_spawnp)>(process, name, actions, attributes,
                                                              argv, variables);
  });
}

ORB_SIM_WRAPPER int system(const char* command) {
  return withOwnEnvironmentComplete(
      [&] { return callNext<"system", decltype(::system)>(command); });
}

ORB_SIM_WRAPPER FILE* popen(const char* command, const char* mode) {
  return withOwnEnvironmentComplete(
      [&] { return callNext<"popen", decltype(::popen)>(command, mode); });
}
