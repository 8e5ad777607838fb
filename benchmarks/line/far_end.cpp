#include "line/far_end.h"

#include <fcntl.h>
#include <pty.h>
#include <sched.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace orb::bench {

namespace {

using namespace std::chrono_literals;

// A sleep ends late by less than this, nearly always.
constexpr auto kOversleep = 1ms;

void waitUntil(FarEnd::Clock::time_point due) {
  if (due - FarEnd::Clock::now() > kOversleep) {
    std::this_thread::sleep_until(due - kOversleep);
  }
  while (FarEnd::Clock::now() < due) {
    sched_yield();
  }
}

}  // namespace

FarEnd::FarEnd(Bytes answer) : answer_(std::move(answer)) {
  termios raw{};
  cfmakeraw(&raw);
  cfsetspeed(&raw, B115200);
  int master = -1;
  int slave = -1;
  char name[64];
  if (openpty(&master, &slave, name, &raw, nullptr) != 0) {
    throw std::system_error(errno, std::generic_category(), "openpty");
  }
  master_ = {master, "the pty's master"};
  slave_ = {slave, "the pty's slave"};
  tty_ = name;
  fcntl(master, F_SETFL, O_NONBLOCK);
  thread_ = std::thread([this] { serve(); });
}

FarEnd::~FarEnd() {
  stopping_ = true;
  thread_.join();
}

void FarEnd::serve() {
  unsigned long received = 0;
  while (!stopping_) {
    unsigned char query[kQueryLength];
    const ssize_t count = read(master_.get(), query, kQueryLength - received);
    if (count <= 0) {
      sched_yield();
      continue;
    }
    received += static_cast<unsigned long>(count);
    if (received == kQueryLength) {
      received = 0;
      answer();
    }
  }
}

void FarEnd::answer() {
  const std::chrono::nanoseconds delay = delay_;
  if (delay > std::chrono::nanoseconds::zero()) {
    waitUntil(Clock::now() + delay);
  }
  answeredAt_ = Clock::now();
  if (write(master_.get(), answer_.data(), answer_.size()) < 0) {
    // The near end misses its answer, and says so.
  }
}

}  // namespace orb::bench
