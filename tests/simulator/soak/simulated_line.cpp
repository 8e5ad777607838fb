#include "simulated_line.h"

#include <dlfcn.h>
#include <time.h>

#include <utility>

namespace orb::sim::test {
namespace {

SimulatedLine* active = nullptr;

}  // namespace

SimulatedLine::SimulatedLine(Device& device, const std::filesystem::path& link)
    : device_(device), pty_(std::make_unique<Pty>()), link_(link, pty_->path()) {
  active = this;
}

SimulatedLine::~SimulatedLine() { active = nullptr; }

SimulatedLine* SimulatedLine::current() { return active; }

void SimulatedLine::pass(Nanoseconds duration) {
  if (const Bytes written = pty_->read(); !written.empty()) {
    deliver(device_.receive(written));
  }
  now_ += duration;
  const auto elapsed = std::chrono::floor<std::chrono::milliseconds>(now_ - deviceTime_);
  deviceTime_ += elapsed;
  deliver(device_.tick(elapsed));
  if (now_ >= limit_) {
    throw WaitsForEver();
  }
}

/// What the tty has no room for is lost, as on a UART whose client does not read.
void SimulatedLine::deliver(Bytes bytes) {
  const Bytes all = bytes;
  if (!bytes.empty()) {
    pty_->write(bytes);
  }
  delivered_.insert(delivered_.end(), all.begin(),
                    all.end() - static_cast<std::ptrdiff_t>(bytes.size()));
  if (device_.takeHangUp()) {
    auto next = std::make_unique<Pty>();
    link_.pointTo(next->path());
    pty_ = std::move(next);
  }
}

}  // namespace orb::sim::test

// The library calls these through the dynamic linker, which finds a program's own definitions
// first.

#define ORB_TEST_REPLACEMENT extern "C" __attribute__((visibility("default")))

using orb::sim::test::SimulatedLine;

namespace {

/// The C library's function that ours hides.
template <typename Function>
Function* hidden(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool passesHere(const timespec* duration) {
  SimulatedLine* const line = SimulatedLine::current();
  if (line != nullptr) {
    line->pass(std::chrono::seconds(duration->tv_sec) +
               std::chrono::nanoseconds(duration->tv_nsec));
  }
  return line != nullptr;
}

}  // namespace

ORB_TEST_REPLACEMENT int nanosleep(const timespec* duration, timespec* left) {
  static auto* const real = hidden(&::nanosleep, "nanosleep");
  return passesHere(duration) ? 0 : real(duration, left);
}

ORB_TEST_REPLACEMENT int clock_nanosleep(clockid_t clock, int flags, const timespec* duration,
                                         timespec* left) {
  static auto* const real = hidden(&::clock_nanosleep, "clock_nanosleep");
  const bool isRelative = flags == 0;
  return isRelative && passesHere(duration) ? 0 : real(clock, flags, duration, left);
}

ORB_TEST_REPLACEMENT time_t time(time_t* result) noexcept {
  static auto* const real = hidden(&::time, "time");
  constexpr time_t kStart = 1710511407;  // 2024-03-15 14:03:27 UTC
  const SimulatedLine* const line = SimulatedLine::current();
  const time_t now = line == nullptr
                         ? real(nullptr)
                         : kStart + std::chrono::floor<std::chrono::seconds>(line->now()).count();
  if (result != nullptr) {
    *result = now;
  }
  return now;
}
