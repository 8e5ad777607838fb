#include "supervised/worker_process.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <mutex>
#include <thread>
#include <vector>

#include "base/above_standard.h"
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

/// Away from the numbers that the worker's own descriptors get.
OwnedDescriptor forWorker(OwnedDescriptor descriptor) {
  return above(kWorkerLifeline, std::move(descriptor));
}

/// Workers that were killed and had not ended when they were last looked at.
class Unreaped {
 public:
  void add(ChildHandle process) {
    const std::lock_guard<std::mutex> lock(mutex_);
    processes_.push_back(std::move(process));
  }

  void reap() {
    const std::lock_guard<std::mutex> lock(mutex_);
    processes_.erase(std::remove_if(processes_.begin(), processes_.end(),
                                    [](const ChildHandle& process) { return process.hasEnded(); }),
                     processes_.end());
  }

 private:
  std::mutex mutex_;
  std::vector<ChildHandle> processes_;
};

/// Has the kernel continue a process when the pipe that it reads is closed at its other end, in
/// case the process is stopped then. From here, so that it holds before the process has done
/// anything.
void continueAtEndOf(int pipe, pid_t process) {
  ::fcntl(pipe, F_SETOWN, process);
  ::fcntl(pipe, F_SETSIG, SIGCONT);
  ::fcntl(pipe, F_SETFL, O_ASYNC);
}

/// Where this library stands; empty where that is not known. It may have been loaded by a relative
/// path, which holds as long as the process stays in its folder.
std::filesystem::path ownFolder() {
  Dl_info self{};
  if (::dladdr(reinterpret_cast<const void*>(&workerProgram), &self) == 0) {
    return {};
  }
  std::error_code error;
  const auto library = std::filesystem::absolute(self.dli_fname, error);
  return (error ? std::filesystem::path(self.dli_fname) : library).parent_path();
}

Unreaped& unreaped() {
  static auto& processes = *new Unreaped;  // for controllers that go after what is static here
  return processes;
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
    : memory_(forWorker(OwnedDescriptor(::memfd_create(name, MFD_CLOEXEC), "memfd_create"))) {
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
  checked(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), "socketpair");
  socket_ = aboveStandard(OwnedDescriptor(ends[0]));
  const OwnedDescriptor theirs = forWorker(OwnedDescriptor(ends[1]));
  Pipe lifeline;
  lifeline_ = aboveStandard(std::move(lifeline.writing));
  const OwnedDescriptor theirLifeline = forWorker(std::move(lifeline.reading));
  const pid_t process =
      SpawnPlan(theirs.get(), theirLifeline.get(), output_.descriptor(), errors_.descriptor())
          .spawn(program);
  process_.emplace(process);
  continueAtEndOf(theirLifeline.get(), process);
}

WorkerProcess::~WorkerProcess() { end(); }

bool WorkerProcess::announceRequest() {
  return sendFrame(socket_.get(), kAnnouncement, std::chrono::steady_clock::now()) !=
         Transfer::Closed;
}

Transfer WorkerProcess::send(const CallRequest& request, Deadline deadline) {
  return sendFrame(socket_.get(), encode(request), deadline);
}

Transfer WorkerProcess::receive(CallResponse& response, Deadline deadline) {
  std::string bytes;
  const Transfer received = receiveFrame(socket_.get(), bytes, deadline, kAwake);
  if (received == Transfer::Done) {
    response = decodeResponse(bytes);
  }
  return received;
}

void WorkerProcess::end() {
  if (!process_ || isOfParent()) {
    return;
  }
  unreaped().reap();
  if (!process_->hasEnded()) {
    process_->kill();
    // A system call that does not end at once keeps a killed process: it is reaped later.
    int looks = 500;
    while (!process_->hasEnded() && --looks > 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (looks == 0) {
      unreaped().add(std::move(*process_));
    }
  }
  process_.reset();
}

std::string workerProgram() {
  namespace fs = std::filesystem;
  static const auto& folder = *new fs::path(ownFolder());  // as unreaped() has its own
  if (folder.empty()) {
    return ORB_WORKER_NAME;
  }
  std::error_code ignored;
  const fs::path installed = folder / ORB_WORKER_FROM_LIBRARY / ORB_WORKER_NAME;
  if (fs::exists(installed, ignored)) {
    return installed;
  }
  return folder / "../bin" / ORB_WORKER_NAME;
}

}  // namespace orb
