// Starts a shell command in one of the ways in which a program can, with an empty environment.
//
//     start_program WAY COMMAND

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace {

char* const kNoVariables[] = {nullptr};
const char kShell[] = "/bin/sh";
char name[] = "sh";
char option[] = "-c";
char* argv[] = {name, option, nullptr, nullptr};

int finished(pid_t child) {
  int status = -1;
  const bool isExit = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
  return isExit ? WEXITSTATUS(status) : 1;
}

int executedInVfork() {
  const pid_t child = vfork();
  if (child == 0) {
    execve(kShell, argv, kNoVariables);
    _exit(127);
  }
  return finished(child);
}

int spawned(decltype(posix_spawn)* spawn, const char* file) {
  pid_t child = -1;
  return spawn(&child, file, nullptr, nullptr, argv, kNoVariables) == 0 ? finished(child) : 1;
}

struct Way {
  const char* name;
  int (*start)(const char* command);
};

const Way kWays[] = {
    {"execve", [](auto) { return execve(kShell, argv, kNoVariables); }},
    {"execle", [](auto c) { return execle(kShell, "sh", "-c", c, nullptr, kNoVariables); }},
    {"execvpe", [](auto) { return execvpe("sh", argv, kNoVariables); }},
    {"fexecve",
     [](auto) { return fexecve(open(kShell, O_RDONLY | O_CLOEXEC), argv, kNoVariables); }},
    {"execveat",
     [](auto) { return execveat(open("/bin", O_PATH | O_CLOEXEC), "sh", argv, kNoVariables, 0); }},
    {"execveat_here",  // COMMAND is a program in the current directory
     [](auto c) { return execveat(open(".", O_PATH | O_CLOEXEC), c, argv, kNoVariables, 0); }},
    {"posix_spawn", [](auto) { return spawned(posix_spawn, kShell); }},
    {"posix_spawnp", [](auto) { return spawned(posix_spawnp, "sh"); }},
    {"vfork", [](auto) { return executedInVfork(); }},
    {"execv", [](auto) { return clearenv() + execv(kShell, argv); }},
    {"execvp", [](auto) { return clearenv() + execvp("sh", argv); }},
    {"execl", [](auto c) { return clearenv() + execl(kShell, "sh", "-c", c, nullptr); }},
    {"execlp", [](auto c) { return clearenv() + execlp("sh", "sh", "-c", c, nullptr); }},
    {"system", [](auto c) { return clearenv() + system(c); }},
    {"popen", [](auto c) { return clearenv() + pclose(popen(c, "w")); }},
};

}  // namespace

int main(int count, char** arguments) {
  for (const Way& way : kWays) {
    if (count == 3 && std::strcmp(way.name, arguments[1]) == 0) {
      argv[2] = arguments[2];
      return way.start(arguments[2]) == 0 ? 0 : 1;
    }
  }
  return 2;
}
