#include "reliability/system_faults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <poll.h>
#include <stdio.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <utility>

#include "support/replacement.h"

namespace orb::test {

namespace {

thread_local SystemFaults* active = nullptr;

// Not in memory from the heap, whose blocks are counted.
std::array<SystemFaults::Call, 100'000> noted;
std::size_t notedCount = 0;

int errorOf(SystemFault fault) {
  return fault == SystemFault::kInterrupted ? EINTR : fault == SystemFault::kNoSpace ? ENOSPC : EIO;
}

}  // namespace

SystemFaults::SystemFaults(std::size_t number, SystemFault fault) : number_(number), fault_(fault) {
  notedCount = 0;
  active = this;
}

SystemFaults::~SystemFaults() { active = nullptr; }

std::span<const SystemFaults::Call> SystemFaults::calls() { return {noted.data(), notedCount}; }

void SystemFaults::foundNothing() { noted[notedCount - 1].foundNothing = true; }

bool SystemFaults::passes(const char* name, int descriptor, std::size_t* size) {
  noted.at(notedCount++) = {name};
  if (descriptor >= 0 && descriptor == hungUp_) {
    errno = EIO;
    return false;
  }
  if (notedCount != number_) {
    return true;
  }
  const bool isShort = fault_ == SystemFault::kShort;
  if (isShort || fault_ == SystemFault::kZero) {
    if (size == nullptr || *size < (isShort ? 2 : 1)) {
      return true;
    }
    hasHappened_ = true;
    *size = isShort ? *size / 2 : 0;
    return isShort;
  }
  if (fault_ == SystemFault::kHangUp) {
    if (descriptor < 0) {
      return true;
    }
    hungUp_ = descriptor;
  }
  hasHappened_ = true;
  errno = errorOf(fault_);
  return false;
}

Undisturbed::Undisturbed() : faults_(std::exchange(active, nullptr)) {}
Undisturbed::~Undisturbed() { active = faults_; }

namespace {

/// The C library's function that ours hides.
template <typename Function>
Function* hidden(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Makes a call unless a fault falls on it.
template <typename Function, typename... Arguments>
auto disturbed(Function* real, const char* name, int descriptor, Arguments... arguments)
    -> decltype(real(arguments...)) {
  if (active == nullptr || active->passes(name, descriptor, nullptr)) {
    return real(arguments...);
  }
  return decltype(real(arguments...))(-1);
}

/// The same, for one that moves `size` bytes.
template <typename Move>
ssize_t disturbedMove(const char* name, int descriptor, std::size_t size, Move move) {
  if (active == nullptr) {
    return move(size);
  }
  const std::size_t wanted = size;
  if (!active->passes(name, descriptor, &size)) {
    return size < wanted ? 0 : -1;
  }
  const ssize_t moved = move(size);
  if (moved < 0 && errno == EAGAIN) {
    active->foundNothing();
  }
  return moved;
}

/// A bus with a device of eight registers, at any descriptor.
int i2cAdapter(unsigned long request, void* argument) {
  static std::array<unsigned char, 8> registers{0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
  if (request == I2C_FUNCS) {
    *static_cast<unsigned long*>(argument) = I2C_FUNC_I2C;
  }
  if (request != I2C_RDWR) {
    return 0;
  }
  const auto& transfer = *static_cast<i2c_rdwr_ioctl_data*>(argument);
  std::size_t at = transfer.msgs[0].buf[0] % registers.size();
  for (unsigned int i = 0; i < transfer.nmsgs; ++i) {
    const i2c_msg& message = transfer.msgs[i];
    const bool reads = (message.flags & I2C_M_RD) != 0;
    for (int k = reads ? 0 : 1; k < message.len; ++k) {
      unsigned char& kept = registers[at++ % registers.size()];
      reads ? message.buf[k] = kept : kept = message.buf[k];
    }
  }
  return static_cast<int>(transfer.nmsgs);
}

}  // namespace

}  // namespace orb::test

using orb::test::disturbed;
using orb::test::disturbedMove;
using orb::test::hidden;
using orb::test::i2cAdapter;

#define ORB_HIDDEN(function) static auto* const real = hidden(&::function, #function)

ORB_TEST_REPLACEMENT int open(const char* path, int flags, ...) {
  ORB_HIDDEN(open);
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return disturbed(real, "open", -1, path, flags, mode);
}

ORB_TEST_REPLACEMENT int __open_2(const char* path, int flags) { return open(path, flags); }

ORB_TEST_REPLACEMENT FILE* fopen(const char* path, const char* mode) {
  ORB_HIDDEN(fopen);
  const auto opened = [](const char* p, const char* m) {
    return reinterpret_cast<std::intptr_t>(real(p, m));
  };
  const std::intptr_t stream = disturbed(+opened, "fopen", -1, path, mode);
  return stream == -1 ? nullptr : reinterpret_cast<FILE*>(stream);
}

/// A failing close has closed all the same.
ORB_TEST_REPLACEMENT int close(int descriptor) {
  ORB_HIDDEN(close);
  real(descriptor);
  return disturbed(
      +[] { return 0; }, "close", descriptor);
}

ORB_TEST_REPLACEMENT ssize_t read(int descriptor, void* buffer, size_t size) {
  ORB_HIDDEN(read);
  return disturbedMove("read", descriptor, size,
                       [&](std::size_t part) { return real(descriptor, buffer, part); });
}

ORB_TEST_REPLACEMENT ssize_t write(int descriptor, const void* buffer, size_t size) {
  ORB_HIDDEN(write);
  return disturbedMove("write", descriptor, size,
                       [&](std::size_t part) { return real(descriptor, buffer, part); });
}

ORB_TEST_REPLACEMENT ssize_t recvmsg(int descriptor, msghdr* message, int flags) {
  ORB_HIDDEN(recvmsg);
  iovec& first = message->msg_iov[0];
  return disturbedMove("recvmsg", descriptor, first.iov_len, [&](std::size_t part) {
    const std::size_t whole = std::exchange(first.iov_len, part);
    const ssize_t moved = real(descriptor, message, flags);
    first.iov_len = whole;
    return moved;
  });
}

// Of several pieces, a short call moves a part of the first.
ORB_TEST_REPLACEMENT ssize_t sendmsg(int descriptor, const msghdr* message, int flags) {
  ORB_HIDDEN(sendmsg);
  const std::size_t size = message->msg_iovlen > 0 ? message->msg_iov[0].iov_len : 0;
  return disturbedMove("sendmsg", descriptor, size, [&](std::size_t part) {
    if (part == size) {
      return real(descriptor, message, flags);
    }
    iovec first{message->msg_iov[0].iov_base, part};
    msghdr partly = *message;
    partly.msg_iov = &first;
    partly.msg_iovlen = 1;
    return real(descriptor, &partly, flags);
  });
}

ORB_TEST_REPLACEMENT ssize_t writev(int descriptor, const iovec* pieces, int count) {
  ORB_HIDDEN(writev);
  return disturbedMove("writev", descriptor, pieces[0].iov_len, [&](std::size_t part) {
    const iovec first{pieces[0].iov_base, part};
    return part == pieces[0].iov_len ? real(descriptor, pieces, count)
                                     : real(descriptor, &first, 1);
  });
}

ORB_TEST_REPLACEMENT int fsync(int descriptor) {
  ORB_HIDDEN(fsync);
  return disturbed(real, "fsync", descriptor, descriptor);
}

ORB_TEST_REPLACEMENT int tcgetattr(int descriptor, termios* settings) noexcept {
  ORB_HIDDEN(tcgetattr);
  return disturbed(real, "tcgetattr", descriptor, descriptor, settings);
}

ORB_TEST_REPLACEMENT int tcsetattr(int descriptor, int when, const termios* settings) noexcept {
  ORB_HIDDEN(tcsetattr);
  return disturbed(real, "tcsetattr", descriptor, descriptor, when, settings);
}

ORB_TEST_REPLACEMENT int tcflush(int descriptor, int queue) noexcept {
  ORB_HIDDEN(tcflush);
  return disturbed(real, "tcflush", descriptor, descriptor, queue);
}

ORB_TEST_REPLACEMENT int fcntl(int descriptor, int command, ...) {
  ORB_HIDDEN(fcntl);
  va_list arguments;
  va_start(arguments, command);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  return disturbed(real, "fcntl", descriptor, descriptor, command, argument);
}

ORB_TEST_REPLACEMENT int fcntl64(int descriptor, int command, ...) __attribute__((alias("fcntl")));

ORB_TEST_REPLACEMENT int ioctl(int descriptor, unsigned long request, ...) noexcept {
  ORB_HIDDEN(ioctl);
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  const bool isI2c = request == I2C_SLAVE || request == I2C_FUNCS || request == I2C_RDWR;
  return isI2c ? disturbed(i2cAdapter, "ioctl", descriptor, request, argument)
               : real(descriptor, request, argument);
}

ORB_TEST_REPLACEMENT int unlink(const char* path) noexcept {
  ORB_HIDDEN(unlink);
  return disturbed(real, "unlink", -1, path);
}

ORB_TEST_REPLACEMENT int socket(int domain, int type, int protocol) noexcept {
  ORB_HIDDEN(socket);
  return disturbed(real, "socket", -1, domain, type, protocol);
}

ORB_TEST_REPLACEMENT int connect(int descriptor, const sockaddr* address, socklen_t size) {
  ORB_HIDDEN(connect);
  return disturbed(real, "connect", descriptor, descriptor, address, size);
}

ORB_TEST_REPLACEMENT int ppoll(pollfd* descriptors, nfds_t count, const timespec* limit,
                               const sigset_t* mask) {
  ORB_HIDDEN(ppoll);
  return disturbed(real, "ppoll", -1, descriptors, count, limit, mask);
}
