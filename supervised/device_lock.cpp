#include "supervised/device_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <thread>

namespace orb {
namespace {

constexpr char kFileName[] = "LCK..tty_gps";
constexpr std::chrono::milliseconds kLook{5};

/// The process id that the file holds, as serial tools write it; 0 where it holds none.
pid_t writtenIn(int file) {
  char text[32];
  const ssize_t size = ::pread(file, text, sizeof text, 0);
  if (size <= 0) {
    return 0;
  }
  const char* const end = text + size;
  const char* digits = text;
  while (digits != end && *digits == ' ') {
    ++digits;
  }
  pid_t process = 0;
  std::from_chars(digits, end, process);
  return process > 0 ? process : 0;
}

bool isAlive(pid_t process) { return ::kill(process, 0) == 0 || errno == EPERM; }

/// Whether `path` is still the name of the open `file`: a holder removes it when it is done.
bool isStillAt(const std::string& path, int file) {
  struct stat named {};
  struct stat opened {};
  return ::stat(path.c_str(), &named) == 0 && ::fstat(file, &opened) == 0 &&
         named.st_ino == opened.st_ino && named.st_dev == opened.st_dev;
}

/// A file that another user has made can be read at least, which is enough for flock().
OwnedDescriptor openFile(const std::string& path) {
  constexpr mode_t kEveryoneReads = 0644;
  OwnedDescriptor file(
      ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY, kEveryoneReads));
  if (!file.isOpen() && errno == EACCES) {
    file = OwnedDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY));
  }
  return file;
}

}  // namespace

std::string DeviceLock::path() {
  const bool hasRun = ::access("/run/lock", F_OK) == 0;
  return std::string(hasRun ? "/run/lock/" : "/var/lock/") + kFileName;
}

DeviceLock::~DeviceLock() {
  if (isOurs_) {
    ::unlink(path().c_str());
  }
}

DeviceLock::State DeviceLock::acquire(Deadline deadline) {
  const std::string path = DeviceLock::path();
  for (;;) {
    switch (attempt(path)) {
      case Attempt::Taken:
        return isOurs_ ? State::Held : State::Unprotected;
      case Attempt::Impossible:
        return State::Unprotected;
      case Attempt::Busy:
        if (std::chrono::steady_clock::now() + kLook > deadline) {
          return State::HeldByOther;
        }
        std::this_thread::sleep_for(kLook);
        break;
      case Attempt::Again:
        break;
    }
  }
}

DeviceLock::Attempt DeviceLock::attempt(const std::string& path) {
  file_ = openFile(path);
  if (!file_.isOpen()) {
    problem_ = "cannot write " + path + ": " + std::strerror(errno);
    return Attempt::Impossible;
  }
  if (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
    holder_ = writtenIn(file_.get());
    return Attempt::Busy;
  }
  if (!isStillAt(path, file_.get())) {
    return Attempt::Again;
  }
  // Other tools write the file without flock().
  const pid_t other = writtenIn(file_.get());
  if (other != 0 && other != ::getpid() && isAlive(other)) {
    holder_ = other;
    file_.reset();
    return Attempt::Busy;
  }
  return takeOver(path);
}

DeviceLock::Attempt DeviceLock::takeOver(const std::string& path) {
  char text[16];
  const int length = std::snprintf(text, sizeof text, "%10d\n", static_cast<int>(::getpid()));
  if (::ftruncate(file_.get(), 0) != 0 ||
      ::pwrite(file_.get(), text, static_cast<std::size_t>(length), 0) != length) {
    problem_ = "cannot write " + path + ": " + std::strerror(errno);
    return Attempt::Impossible;
  }
  isOurs_ = true;
  return Attempt::Taken;
}

void DeviceLock::removeLeftBy(pid_t process) {
  const std::string path = DeviceLock::path();
  const OwnedDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY));
  if (file.isOpen() && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0 &&
      writtenIn(file.get()) == process && isStillAt(path, file.get())) {
    ::unlink(path.c_str());
  }
}

}  // namespace orb
