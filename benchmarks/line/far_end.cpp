#include "line/far_end.h"

#include <poll.h>
#include <sched.h>
#include <unistd.h>

#include <utility>

namespace orb::bench {

namespace {

using namespace std::chrono_literals;

// A sleep ends late by less than this, nearly always.
constexpr auto kOversleep = 1ms;

// How long the thread sleeps at most before it looks whether to stop.
constexpr int kLookUpMilliseconds = 100;

void waitUntil(FarEnd::Clock::time_point due) {
  if (due - FarEnd::Clock::now() > kOversleep) {
    std::this_thread::sleep_until(due - kOversleep);
  }
  while (FarEnd::Clock::now() < due) {
    sched_yield();
  }
}

}  // namespace

FarEnd::FarEnd(std::map<unsigned char, Bytes> answers)
    : answers_(std::move(answers)), thread_([this](const std::stop_token& stop) { serve(stop); }) {}

void FarEnd::serve(const std::stop_token& stop) {
  unsigned char query[kQueryLength];
  unsigned long received = 0;
  pollfd line{pty_.master.get(), POLLIN, 0};
  while (!stop.stop_requested()) {
    if (poll(&line, 1, kLookUpMilliseconds) <= 0) {
      continue;
    }
    const ssize_t count = read(pty_.master.get(), query + received, kQueryLength - received);
    received += count > 0 ? static_cast<unsigned long>(count) : 0;
    if (received == kQueryLength) {
      received = 0;
      answer(query[0]);
    }
  }
}

void FarEnd::answer(unsigned char first) {
  const Bytes& bytes = answers_.at(first);
  const std::chrono::nanoseconds delay = delay_;
  if (delay > std::chrono::nanoseconds::zero()) {
    waitUntil(Clock::now() + delay);
  }
  answeredAt_ = Clock::now();
  // Where this fails, the near end misses its answer and says so.
  static_cast<void>(!write(pty_.master.get(), bytes.data(), bytes.size()));
}

}  // namespace orb::bench
