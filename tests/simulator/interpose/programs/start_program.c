/* Starts a shell command in one of the ways in which a program can, with an empty environment.
 *
 *     start_program WAY COMMAND */

#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

static char* const kNoVariables[] = {NULL};
static const char kShell[] = "/bin/sh";

static int finished(pid_t child) {
  int status = -1;
  if (child < 0 || waitpid(child, &status, 0) != child) return 1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

static int spawned(int searchPath, char* command) {
  char* const argv[] = {"sh", "-c", command, NULL};
  pid_t child = -1;
  const int error = searchPath ? posix_spawnp(&child, "sh", NULL, NULL, argv, kNoVariables)
                               : posix_spawn(&child, kShell, NULL, NULL, argv, kNoVariables);
  return error != 0 ? 1 : finished(child);
}

static int executedInVfork(char* command) {
  char* const argv[] = {"sh", "-c", command, NULL};
  const pid_t child = vfork();
  if (child == 0) {
    execve(kShell, argv, kNoVariables);
    _exit(127);
  }
  return finished(child);
}

static int throughPipe(const char* command) {
  clearenv();
  FILE* const stream = popen(command, "w");
  return stream == NULL ? 1 : pclose(stream);
}

static void execute(const char* way, char* command) {
  char* const argv[] = {"sh", "-c", command, NULL};
  if (strcmp(way, "execve") == 0) execve(kShell, argv, kNoVariables);
  if (strcmp(way, "execle") == 0) execle(kShell, "sh", "-c", command, NULL, kNoVariables);
  if (strcmp(way, "execvpe") == 0) execvpe("sh", argv, kNoVariables);
  if (strcmp(way, "fexecve") == 0) fexecve(open(kShell, O_RDONLY | O_CLOEXEC), argv, kNoVariables);
  if (strcmp(way, "execveat") == 0) {
    execveat(open("/bin", O_PATH | O_CLOEXEC), "sh", argv, kNoVariables, 0);
  }
  clearenv();
  if (strcmp(way, "execv") == 0) execv(kShell, argv);
  if (strcmp(way, "execvp") == 0) execvp("sh", argv);
  if (strcmp(way, "execl") == 0) execl(kShell, "sh", "-c", command, NULL);
  if (strcmp(way, "execlp") == 0) execlp("sh", "sh", "-c", command, NULL);
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const char* const way = argv[1];
  char* const command = argv[2];
  if (strcmp(way, "posix_spawn") == 0) return spawned(0, command);
  if (strcmp(way, "posix_spawnp") == 0) return spawned(1, command);
  if (strcmp(way, "vfork") == 0) return executedInVfork(command);
  if (strcmp(way, "popen") == 0) return throughPipe(command);
  if (strcmp(way, "system") == 0) return clearenv() != 0 || system(command) != 0;
  execute(way, command);
  perror(way);
  return 1;
}
