#include "support/scripted_line.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <iostream>
#include <streambuf>
#include <string_view>
#include <utility>

#include "support/check.h"

namespace orb::fuzz {

namespace {

ScriptedLine* active = nullptr;

/// Takes everything and keeps nothing.
class NowhereBuffer : public std::streambuf {
  int_type overflow(int_type character) override { return traits_type::not_eof(character); }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

}  // namespace

ScriptedLine::ScriptedLine(std::vector<Piece> script) : script_(std::move(script)) {
  active = this;
}

ScriptedLine::~ScriptedLine() {
  active = nullptr;
  check(descriptor_ < 0 || ::fcntl(descriptor_, F_GETFD) == -1, "the device is closed");
}

ScriptedLine* ScriptedLine::current() { return active; }

bool ScriptedLine::isOpenAs(int descriptor) {
  return active != nullptr && descriptor >= 0 && active->descriptor_ == descriptor;
}

int ScriptedLine::open() {
  descriptor_ = static_cast<int>(::syscall(SYS_openat, AT_FDCWD, "/dev/null", O_RDWR | O_CLOEXEC));
  return descriptor_;
}

long ScriptedLine::read(std::uint8_t* buffer, std::size_t size) {
  if (next_ == script_.size()) {
    now_ += kSecondsBehindTheScript;
    *buffer = kHarmless;
    return 1;
  }
  Piece& piece = script_[next_];
  now_ += std::exchange(piece.secondsBefore, 0);
  const std::size_t count = std::min(size, piece.bytes.size());
  const auto end = piece.bytes.begin() + static_cast<std::ptrdiff_t>(count);
  std::copy(piece.bytes.begin(), end, buffer);
  piece.bytes.erase(piece.bytes.begin(), end);
  if (piece.bytes.empty()) {
    ++next_;
  }
  if (count == 0) {
    errno = EAGAIN;
    return -1;
  }
  return static_cast<long>(count);
}

namespace {

template <typename Function>
Function* real(Function* /*replacement*/, const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

bool isDriversLog(std::string_view path) { return path.starts_with("/var/log/"); }

}  // namespace

}  // namespace orb::fuzz

// The library calls these through the dynamic linker, which finds a program's own definitions
// first.

#define ORB_FUZZ_REPLACEMENT extern "C" __attribute__((visibility("default")))

using orb::fuzz::ScriptedLine;

ORB_FUZZ_REPLACEMENT int open(const char* path, int flags, ...) {
  ScriptedLine* const line = ScriptedLine::current();
  if (line != nullptr && std::string_view(path) == "/dev/tty_gps") {
    return line->open();
  }
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

ORB_FUZZ_REPLACEMENT ssize_t read(int descriptor, void* buffer, size_t size) {
  return ScriptedLine::isOpenAs(descriptor)
             ? ScriptedLine::current()->read(static_cast<std::uint8_t*>(buffer), size)
             : ::syscall(SYS_read, descriptor, buffer, size);
}

ORB_FUZZ_REPLACEMENT int tcgetattr(int descriptor, termios* settings) noexcept {
  if (ScriptedLine::isOpenAs(descriptor)) {
    *settings = {};
    return 0;
  }
  return orb::fuzz::real(&::tcgetattr, "tcgetattr")(descriptor, settings);
}

ORB_FUZZ_REPLACEMENT int tcsetattr(int descriptor, int when, const termios* settings) noexcept {
  return ScriptedLine::isOpenAs(descriptor)
             ? 0
             : orb::fuzz::real(&::tcsetattr, "tcsetattr")(descriptor, when, settings);
}

ORB_FUZZ_REPLACEMENT std::time_t time(std::time_t* result) noexcept {
  std::time_t now = 0;
  if (const ScriptedLine* const line = ScriptedLine::current()) {
    now = line->time();
  } else {
    timespec real{};
    ::clock_gettime(CLOCK_REALTIME, &real);
    now = real.tv_sec;
  }
  if (result != nullptr) {
    *result = now;
  }
  return now;
}

ORB_FUZZ_REPLACEMENT int clock_nanosleep(clockid_t clock, int flags, const timespec* request,
                                         timespec* rest) {
  if (ScriptedLine::current() != nullptr) {
    return 0;
  }
  return ::syscall(SYS_clock_nanosleep, clock, flags, request, rest) == 0 ? 0 : errno;
}

ORB_FUZZ_REPLACEMENT int nanosleep(const timespec* request, timespec* rest) {
  return ScriptedLine::current() != nullptr
             ? 0
             : static_cast<int>(::syscall(SYS_nanosleep, request, rest));
}

ORB_FUZZ_REPLACEMENT int sched_yield() noexcept {
  return ScriptedLine::current() != nullptr ? 0 : static_cast<int>(::syscall(SYS_sched_yield));
}

ORB_FUZZ_REPLACEMENT FILE* fopen64(const char* path, const char* mode) {
  static auto* const open = orb::fuzz::real(&::fopen64, "fopen64");
  return open(orb::fuzz::isDriversLog(path) ? "/dev/null" : path, mode);
}

ORB_FUZZ_REPLACEMENT FILE* fopen(const char* path, const char* mode) { return fopen64(path, mode); }

// Called once, before the first input.
extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  static orb::fuzz::NowhereBuffer nowhere;
  std::cout.rdbuf(&nowhere);
  std::cerr.rdbuf(&nowhere);
  orb::fuzz::check(std::freopen("/dev/null", "w", stdout) != nullptr, "/dev/null can be opened");
  return 0;
}
