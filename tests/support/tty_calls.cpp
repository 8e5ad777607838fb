#include "support/tty_calls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <utility>

#include "support/replacement.h"

namespace orb::test {

namespace {

constexpr const char* kDefaultDevice = "/dev/tty_gps";

// Room for the calls of a test, so that noting them asks for no memory in the midst of the call.
constexpr std::size_t kUsualCalls = 4096;

TtyCalls* active = nullptr;

}  // namespace

std::ostream& operator<<(std::ostream& out, const TtyCall& call) {
  return out << call.name << '(' << call.argument << ')';
}

TtyCalls::TtyCalls(std::string path) : previous_(active), path_(std::move(path)) {
  made_.reserve(kUsualCalls);
  active = this;
}

TtyCalls::~TtyCalls() { active = previous_; }

TtyCalls* TtyCalls::current() { return active; }

TtyCalls* TtyCalls::concernedBy(int descriptor) {
  return active != nullptr && active->open_ && active->descriptor_ == descriptor ? active : nullptr;
}

const char* TtyCalls::translated(const char* path) const {
  return std::strcmp(path, kDefaultDevice) == 0 ? path_.c_str() : path;
}

void TtyCalls::noteOpen(int descriptor, int flags) {
  note("open", flags);
  descriptor_ = descriptor;
  open_ = descriptor >= 0;
}

void TtyCalls::noteClose() {
  note("close");
  open_ = false;
}

std::vector<long> TtyCalls::readSizes() const {
  std::vector<long> sizes;
  for (const TtyCall& call : made_) {
    if (call.name == "read") {
      sizes.push_back(call.argument);
    }
  }
  return sizes;
}

namespace {

/// Notes a call that concerns the tty, and makes it, unless a test has set its result.
template <typename Result, typename Call>
Result noted(int descriptor, const TtyCall& call, std::optional<Result> TtyCalls::*set,
             Call makeCall) {
  TtyCalls* const calls = TtyCalls::concernedBy(descriptor);
  if (calls != nullptr) {
    calls->note(call.name, call.argument);
    if (const std::optional<Result>& result = calls->*set) {
      errno = *result < 0 ? EIO : errno;
      return *result;
    }
  }
  return static_cast<Result>(makeCall());
}

/// The C library's function that ours hides.
template <typename Function>
Function* hidden(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

}  // namespace orb::test

using orb::test::hidden;
using orb::test::noted;
using orb::test::TtyCalls;

ORB_TEST_REPLACEMENT int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  TtyCalls* const calls = TtyCalls::current();
  path = calls != nullptr ? calls->translated(path) : path;
  const auto descriptor = static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
  if (calls != nullptr && calls->isTty(path)) {
    calls->noteOpen(descriptor, flags);
  }
  return descriptor;
}

// What fortified headers make of an open() without a mode for clang, from glibc 2.40 on.
ORB_TEST_REPLACEMENT int __open_2(const char* path, int flags) { return open(path, flags); }

ORB_TEST_REPLACEMENT int close(int descriptor) {
  if (TtyCalls* const calls = TtyCalls::concernedBy(descriptor)) {
    calls->noteClose();
  }
  return static_cast<int>(syscall(SYS_close, descriptor));
}

ORB_TEST_REPLACEMENT ssize_t read(int descriptor, void* buffer, size_t size) {
  TtyCalls* const calls = TtyCalls::concernedBy(descriptor);
  if (calls != nullptr) {
    calls->note("read", static_cast<long>(size));
  }
  return calls != nullptr && calls->read ? calls->read(descriptor, buffer, size)
                                         : syscall(SYS_read, descriptor, buffer, size);
}

ORB_TEST_REPLACEMENT ssize_t write(int descriptor, const void* buffer, size_t size) {
  return noted(descriptor, {"write", static_cast<long>(size)}, &TtyCalls::writeResult,
               [&] { return syscall(SYS_write, descriptor, buffer, size); });
}

ORB_TEST_REPLACEMENT int fsync(int descriptor) {
  return noted(descriptor, {"fsync"}, &TtyCalls::syncResult,
               [&] { return syscall(SYS_fsync, descriptor); });
}

ORB_TEST_REPLACEMENT int tcgetattr(int descriptor, termios* settings) noexcept {
  static auto* const real = hidden(&::tcgetattr, "tcgetattr");
  TtyCalls* const calls = TtyCalls::concernedBy(descriptor);
  if (calls != nullptr) {
    calls->note("tcgetattr");
  }
  if (calls == nullptr || !calls->settingsFound) {
    return real(descriptor, settings);
  }
  *settings = *calls->settingsFound;
  return 0;
}

ORB_TEST_REPLACEMENT int tcsetattr(int descriptor, int when, const termios* settings) noexcept {
  static auto* const real = hidden(&::tcsetattr, "tcsetattr");
  if (TtyCalls* const calls = TtyCalls::concernedBy(descriptor)) {
    calls->noteSettings(*settings);
  }
  return noted(descriptor, {"tcsetattr", when}, &TtyCalls::settingResult,
               [&] { return real(descriptor, when, settings); });
}

ORB_TEST_REPLACEMENT int tcflush(int descriptor, int queue) noexcept {
  static auto* const real = hidden(&::tcflush, "tcflush");
  if (TtyCalls* const calls = TtyCalls::concernedBy(descriptor)) {
    calls->note("tcflush", queue);
  }
  return real(descriptor, queue);
}
