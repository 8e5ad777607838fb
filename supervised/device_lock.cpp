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
#include <fstream>
#include <thread>

#include "base/above_standard.h"

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

/// Whether a process runs: one that has been killed and not been waited for does not. Others' may
/// be hidden in /proc.
bool isAlive(pid_t process) {
  if (::kill(process, 0) != 0 && errno == ESRCH) {
    return false;
  }
  std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
  std::string line;
  std::getline(stat, line);
  const std::size_t name = line.rfind(')');  // can hold anything
  return name == std::string::npos || line.compare(name, 4, ") Z ") != 0;
}

struct stat statusOf(int file) {
  struct stat opened {};
  ::fstat(file, &opened);
  return opened;
}

/// Whether the open `file` still has its name: a holder removes it when it is done.
bool hasName(int file) { return statusOf(file).st_nlink > 0; }

struct LockFile {
  OwnedDescriptor descriptor;
  bool isNew = false;
};

/// A file that another user has made can be read at least, which is enough for flock().
LockFile openFile(const std::string& path) {
  constexpr mode_t kEveryoneReads = 0644;
  // Whatever stands there, such as a FIFO, opening it waits for nobody.
  constexpr int kFlags = O_CLOEXEC | O_NOFOLLOW | O_NOCTTY | O_NONBLOCK;
  LockFile file{
      OwnedDescriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | kFlags, kEveryoneReads)),
      true};
  const bool wasThere = !file.descriptor.isOpen() && errno == EEXIST;
  if (wasThere) {
    file = {OwnedDescriptor(::open(path.c_str(), O_RDWR | kFlags)), false};
  }
  if (!file.descriptor.isOpen() && errno == EACCES) {
    file = {OwnedDescriptor(::open(path.c_str(), O_RDONLY | kFlags)), false};
    if (!wasThere || errno != ENOENT) {
      errno = EACCES;  // which it is that counts, also where there is no file
    }
  }
  return file;
}

}  // namespace

const std::string& DeviceLock::path() {
  static const std::string path =
      std::string(::access("/run/lock", F_OK) == 0 ? "/run/lock/" : "/var/lock/") + kFileName;
  return path;
}

DeviceLock::~DeviceLock() {
  if (isOurs_ && hasName(file_.get())) {
    ::unlink(path().c_str());
  }
}

std::string DeviceLock::holderInWords() const {
  return holder_ == 0 ? "another process" : "process " + std::to_string(holder_);
}

DeviceLock::State DeviceLock::acquire(Deadline deadline) {
  const std::string path = DeviceLock::path();
  for (;;) {
    switch (attempt(path)) {
      case Attempt::Taken:
        return State::Held;
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
  LockFile opened = openFile(path);
  const int openError = errno;
  file_ = aboveStandard(std::move(opened.descriptor));
  errno = openError;
  if (!file_.isOpen()) {
    if (errno == ENOENT && !opened.isNew) {
      return Attempt::Again;  // its holder has just removed it
    }
    return impossible(path, errno);
  }
  if (!S_ISREG(statusOf(file_.get()).st_mode)) {
    file_.reset();
    return impossible(path, EINVAL);
  }
  if (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
    holder_ = writtenIn(file_.get());
    return Attempt::Busy;
  }
  if (!hasName(file_.get())) {
    return Attempt::Again;
  }
  if (opened.isNew) {
    return takeOver(path);
  }
  // Other tools write the file without flock().
  const pid_t other = writtenIn(file_.get());
  if (other != 0 && other != ::getpid() && isAlive(other)) {
    holder_ = other;
    file_.reset();
    return Attempt::Busy;
  }
  // Somebody's file that was linked there would be overwritten.
  if (statusOf(file_.get()).st_nlink > 1) {
    file_.reset();
    return impossible(path, EMLINK);
  }
  if (::ftruncate(file_.get(), 0) != 0) {
    return impossible(path, errno == EINVAL ? EACCES : errno);  // EINVAL: it is open for reading
  }
  return takeOver(path);
}

DeviceLock::Attempt DeviceLock::impossible(const std::string& path, int error) {
  problem_ = "cannot write " + path + ": " + std::strerror(error);
  return Attempt::Impossible;
}

DeviceLock::Attempt DeviceLock::takeOver(const std::string& path) {
  isOurs_ = true;
  char text[16];
  const int length = std::snprintf(text, sizeof text, "%10d\n", static_cast<int>(::getpid()));
  if (::pwrite(file_.get(), text, static_cast<std::size_t>(length), 0) != length) {
    return impossible(path, errno);
  }
  return Attempt::Taken;
}

void DeviceLock::removeLeftBy(pid_t process) {
  const std::string path = DeviceLock::path();
  const OwnedDescriptor file(
      ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY | O_NONBLOCK));
  if (!file.isOpen()) {
    return;
  }
  // The kernel closes the descriptors of a killed process one after another.
  for (int looks = 0; looks < 20; ++looks) {
    if (::flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
      if (writtenIn(file.get()) == process && hasName(file.get())) {
        ::unlink(path.c_str());
      }
      return;
    }
    if (writtenIn(file.get()) != process) {
      return;  // the next one has it already
    }
    std::this_thread::sleep_for(kLook);
  }
}

}  // namespace orb
