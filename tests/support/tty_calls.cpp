#include "support/tty_calls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <utility>

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

/// The C library's function that ours hides.
template <typename Function>
Function* hidden(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

template <typename Result>
Result resultOf(Result result) {
  if (result < 0) {
    errno = EIO;
  }
  return result;
}

}  // namespace

}  // namespace orb::test

// The library calls these through the dynamic linker, which finds a program's own definitions
// first.

#define ORB_TEST_REPLACEMENT extern "C" __attribute__((visibility("default")))

using orb::test::hidden;
using orb::test::resultOf;
using orb::test::TtyCalls;

ORB_TEST_REPLACEMENT int open(const char* path, int flags, ...) {
  mode_t mode = 0;
  if ((flags & O_CREAT) != 0) {
    va_list arguments;
    va_start(arguments, flags);
    mode = va_arg(arguments, mode_t);
    va_end(arguments);
  }
  static auto* const real = hidden(&::open, "open");
  TtyCalls* const calls = TtyCalls::current();
  if (calls == nullptr) {
    return real(path, flags, mode);
  }
  path = calls->translated(path);
  const int descriptor = real(path, flags, mode);
  if (calls->isTty(path)) {
    calls->noteOpen(descriptor, flags);
  }
  return descriptor;
}

ORB_TEST_REPLACEMENT int close(int descriptor) {
  static auto* const real = hidden(&::close, "close");
  if (TtyCalls* const calls = TtyCalls::concernedBy(descriptor)) {
    calls->noteClose();
  }
  return real(descriptor);
}

ORB_TEST_REPLACEMENT ssize_t read(int descriptor, void* buffer, size_t size) {
  static auto* const real = hidden(&::read, "read");
  TtyCalls* const calls = TtyCalls::concernedBy(descriptor);
  if (calls == nullptr) {
    return real(descriptor, buffer, size);
  }
  calls->note("read", static_cast<long>(size));
  return calls->read ? calls->read(descriptor, buffer, size) : real(descriptor, buffer, size);
}

ORB_TEST_REPLACEMENT ssize_t write(int descriptor, const void* buffer, size_t size) {
  static auto* const real = hidden(&::write, "write");
  TtyCalls* const calls = TtyCalls::concernedBy(descriptor);
  if (calls == nullptr) {
    return real(descriptor, buffer, size);
  }
  calls->note("write", static_cast<long>(size));
  return calls->writeResult ? resultOf(*calls->writeResult) : real(descriptor, buffer, size);
}

ORB_TEST_REPLACEMENT int fsync(int descriptor) {
  static auto* const real = hidden(&::fsync, "fsync");
  TtyCalls* const calls = TtyCalls::concernedBy(descriptor);
  if (calls == nullptr) {
    return real(descriptor);
  }
  calls->note("fsync");
  return calls->syncResult ? resultOf(*calls->syncResult) : real(descriptor);
}

ORB_TEST_REPLACEMENT int tcgetattr(int descriptor, termios* settings) noexcept {
  static auto* const real = hidden(&::tcgetattr, "tcgetattr");
  TtyCalls* const calls = TtyCalls::concernedBy(descriptor);
  if (calls == nullptr) {
    return real(descriptor, settings);
  }
  calls->note("tcgetattr");
  if (calls->settingsFound) {
    *settings = *calls->settingsFound;
    return 0;
  }
  return real(descriptor, settings);
}

ORB_TEST_REPLACEMENT int tcsetattr(int descriptor, int when, const termios* settings) noexcept {
  static auto* const real = hidden(&::tcsetattr, "tcsetattr");
  TtyCalls* const calls = TtyCalls::concernedBy(descriptor);
  if (calls == nullptr) {
    return real(descriptor, when, settings);
  }
  calls->note("tcsetattr", when);
  calls->noteSettings(*settings);
  return calls->settingResult ? resultOf(*calls->settingResult) : real(descriptor, when, settings);
}

ORB_TEST_REPLACEMENT int tcflush(int descriptor, int queue) noexcept {
  static auto* const real = hidden(&::tcflush, "tcflush");
  if (TtyCalls* const calls = TtyCalls::concernedBy(descriptor)) {
    calls->note("tcflush", queue);
  }
  return real(descriptor, queue);
}
