#include "supervised/worker_process.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>

#include "base/pipe.h"
#include "supervised/worker_socket.h"

namespace orb {
namespace {

/// Throws where `error`, as posix_spawn and its kin return it, is one.
void check(int error, const char* what) {
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), what);
  }
}

/// Away from standard input, output and error, where a client has closed them: the worker's own are
/// put there.
OwnedDescriptor aboveStandard(OwnedDescriptor descriptor) {
  if (descriptor.get() > kWorkerLifeline) {
    return descriptor;
  }
  return OwnedDescriptor(::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, kWorkerLifeline + 1), "fcntl");
}

/// What posix_spawn() is to do in the new process.
class SpawnPlan {
 public:
  SpawnPlan(int socket, int lifeline, int output, int errors) {
    check(::posix_spawn_file_actions_init(&actions_), "posix_spawn_file_actions_init");
    check(::posix_spawnattr_init(&attributes_), "posix_spawnattr_init");
    check(::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0),
          "posix_spawn_file_actions_addopen");
    give(output, STDOUT_FILENO);
    give(errors, STDERR_FILENO);
    give(socket, kWorkerSocket);
    give(lifeline, kWorkerLifeline);
    check(::posix_spawn_file_actions_addclosefrom_np(&actions_, kWorkerLifeline + 1),
          "posix_spawn_file_actions_addclosefrom_np");
    // A process group of its own: signals from the terminal are for the client.
    check(::posix_spawnattr_setflags(
              &attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF),
          "posix_spawnattr_setflags");
    sigset_t signals;
    sigemptyset(&signals);
    check(::posix_spawnattr_setsigmask(&attributes_, &signals), "posix_spawnattr_setsigmask");
    sigfillset(&signals);
    check(::posix_spawnattr_setsigdefault(&attributes_, &signals), "posix_spawnattr_setsigdefault");
  }
  SpawnPlan(const SpawnPlan&) = delete;
  SpawnPlan& operator=(const SpawnPlan&) = delete;
  ~SpawnPlan() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }

  pid_t spawn(const std::string& program) {
    std::string name = program;
    const std::array<char*, 2> arguments = {name.data(), nullptr};
    pid_t process = -1;
    check(::posix_spawn(&process, program.c_str(), &actions_, &attributes_, arguments.data(),
                        environ),
          program.c_str());
    return process;
  }

 private:
  void give(int descriptor, int as) {
    check(::posix_spawn_file_actions_adddup2(&actions_, descriptor, as),
          "posix_spawn_file_actions_adddup2");
  }

  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

}  // namespace

CapturedStream::CapturedStream(const char* name)
    : memory_(aboveStandard(OwnedDescriptor(::memfd_create(name, MFD_CLOEXEC), "memfd_create"))) {
  // What is written goes to the end, also after take() has cut it off.
  checked(::fcntl(memory_.get(), F_SETFL, O_APPEND), "fcntl");
}

std::string CapturedStream::take() {
  std::string text;
  char part[1024];
  for (ssize_t size = 0;
       (size = ::pread(memory_.get(), part, sizeof part, static_cast<off_t>(text.size()))) > 0;) {
    text.append(part, static_cast<std::size_t>(size));
  }
  if (!text.empty()) {
    checked(::ftruncate(memory_.get(), 0), "ftruncate");
  }
  return text;
}

WorkerProcess::WorkerProcess(const std::string& program)
    : output_("orb-gnss-worker output"), errors_("orb-gnss-worker errors") {
  std::array<int, 2> ends{};
  checked(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), "socketpair");
  socket_ = OwnedDescriptor(ends[0]);
  const OwnedDescriptor theirs = aboveStandard(OwnedDescriptor(ends[1]));
  Pipe lifeline;
  lifeline_ = std::move(lifeline.writing);
  const OwnedDescriptor theirLifeline = aboveStandard(std::move(lifeline.reading));
  process_ =
      SpawnPlan(theirs.get(), theirLifeline.get(), output_.descriptor(), errors_.descriptor())
          .spawn(program);
}

WorkerProcess::~WorkerProcess() { end(); }

Transfer WorkerProcess::ask(const Request& request, Response& response, Deadline deadline) {
  const Transfer sent = sendFrame(socket_.get(), encode(request), deadline);
  if (sent != Transfer::Done) {
    return sent;
  }
  std::string bytes;
  const Transfer received = receiveFrame(socket_.get(), bytes, deadline);
  if (received == Transfer::Done) {
    response = decodeResponse(bytes);
  }
  return received;
}

void WorkerProcess::end() {
  if (process_ > 0) {
    ::kill(process_, SIGKILL);
    while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
  }
}

std::string workerProgram() {
  namespace fs = std::filesystem;
  Dl_info self{};
  if (::dladdr(reinterpret_cast<const void*>(&workerProgram), &self) == 0) {
    return ORB_WORKER_NAME;
  }
  const fs::path folder = fs::path(self.dli_fname).parent_path();
  std::error_code ignored;
  const fs::path installed = folder / ORB_WORKER_FROM_LIBRARY / ORB_WORKER_NAME;
  if (fs::exists(installed, ignored)) {
    return installed;
  }
  return folder / "../bin" / ORB_WORKER_NAME;
}

}  // namespace orb
