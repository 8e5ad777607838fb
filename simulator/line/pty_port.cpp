#include "line/pty_port.h"

#include <fcntl.h>
#include <poll.h>

#include <cerrno>
#include <chrono>
#include <functional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "base/line_speed.h"
#include "line/available_bytes.h"

namespace orb::sim {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// A lock on a byte of the tty that stands for the link. It is of the kind that ends with who has
/// opened the file, and that programs which lock ttys do not use.
struct flock lockFor(const std::filesystem::path& link) {
  constexpr std::size_t kMostBytes = 0x7FFFFFFF;
  const std::string path = link.empty() ? link : std::filesystem::absolute(link).lexically_normal();
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = static_cast<off_t>(std::hash<std::string>()(path) & kMostBytes);
  lock.l_len = 1;
  return lock;
}

}  // namespace

PtyPort::Pty::Pty(const std::filesystem::path& link) : RawPty(O_NONBLOCK) {
  struct flock lock = lockFor(link);
  ::fcntl(tty.get(), F_OFD_SETLK, &lock);  // where that is not to be had, the line serves as well
}

bool PtyPort::isOffered(const std::filesystem::path& tty, const std::filesystem::path& link) {
  const OwnedDescriptor opened(::open(tty.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  if (!opened.isOpen()) {
    return errno != ENOENT;  // who is not let in cannot know
  }
  struct flock lock = lockFor(link);
  return ::fcntl(opened.get(), F_OFD_GETLK, &lock) != 0 || lock.l_type != F_UNLCK;
}

PtyPort::PtyPort(const std::filesystem::path& link)
    : linkPath_(link), pty_(link), link_(link, pty_.path) {}

std::string PtyPort::path() const {
  const std::lock_guard lock(mutex_);
  return pty_.path;
}

Bytes PtyPort::read() { return readAvailable(pty_.master.get()).value_or(Bytes{}); }

void PtyPort::write(Bytes& bytes) { writeAvailable(pty_.master.get(), bytes); }

// The tty's settings are those of its clients.
std::optional<unsigned int> PtyPort::clientSpeed() const {
  termios settings{};
  return ::tcgetattr(pty_.tty.get(), &settings) == 0 ? std::optional(baudOf(settings))
                                                     : std::nullopt;
}

void PtyPort::setClientSpeed(unsigned int baud) {
  termios settings{};
  if (::tcgetattr(pty_.tty.get(), &settings) == 0 && setBaud(settings, baud)) {
    ::tcsetattr(pty_.tty.get(), TCSANOW, &settings);
  }
}

// The new pty is in its place before the old one goes, so that a client that sees the hang-up finds
// it at once.
void PtyPort::hangUp() {
  waitUntilRead();
  try {
    Pty next(linkPath_);
    link_.pointTo(next.path);
    const std::lock_guard lock(mutex_);
    std::swap(pty_, next);
  } catch (const std::system_error&) {
  }
}

// The tty is readable here exactly while clients have something left to read.
void PtyPort::waitUntilRead() const {
  // A client that reads at all has read by then; one that does not must not hold the line up.
  constexpr milliseconds kTimeToRead{250};
  const auto end = steady_clock::now() + kTimeToRead;
  pollfd polled{pty_.tty.get(), POLLIN, 0};
  while (::poll(&polled, 1, 0) == 1 && steady_clock::now() < end) {
    std::this_thread::sleep_for(milliseconds{1});
  }
}

}  // namespace orb::sim
