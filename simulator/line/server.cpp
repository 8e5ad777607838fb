#include "line/server.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace orb::sim {
namespace {

using std::chrono::ceil;
using std::chrono::floor;
using std::chrono::milliseconds;

// Another thread may change a device at any time without telling the line.
constexpr milliseconds kLongestSleep{50};

/// Starts a thread that no signal of the program is delivered to.
template <typename Function>
std::thread startWithoutSignals(Function function) {
  sigset_t all;
  sigset_t before;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before);
  std::thread thread(std::move(function));
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return thread;
}

}  // namespace

PtyLine::Server::Server(Device& device, const std::filesystem::path& link)
    : device_(device),
      link_(link, pty_.path()),
      wake_(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "eventfd"),
      thread_(startWithoutSignals([this] { run(); })) {}

PtyLine::Server::~Server() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake();
  thread_.join();
}

void PtyLine::Server::send(const Bytes& bytes) {
  {
    const std::lock_guard lock(mutex_);
    append(outgoing_, bytes);
  }
  wake();
}

void PtyLine::Server::startChatter(milliseconds interval) {
  {
    const std::lock_guard lock(mutex_);
    chatterInterval_ = interval;
    nextChatter_ = Clock::now();
  }
  wake();
}

void PtyLine::Server::stopChatter() {
  const std::lock_guard lock(mutex_);
  chatterInterval_.reset();
}

void PtyLine::Server::wake() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(wake_.get(), &one, sizeof one);
}

void PtyLine::Server::run() {
  while (true) {
    const bool clientWrote = sleep();
    {
      const std::lock_guard lock(mutex_);
      if (stopping_) {
        return;
      }
    }
    letTimePass(floor<milliseconds>(Clock::now() - deviceTime_));
    if (clientWrote) {
      serveClient();
    }
    chatter();
    flush();
  }
}

/// Returns whether a client has written.
bool PtyLine::Server::sleep() {
  short int events = POLLIN;
  {
    const std::lock_guard lock(mutex_);
    events = outgoing_.empty() ? POLLIN : POLLIN | POLLOUT;
  }
  std::array<pollfd, 2> polled{{{pty_.descriptor(), events, 0}, {wake_.get(), POLLIN, 0}}};
  ::poll(polled.data(), polled.size(), sleepLimit());
  std::uint64_t wakes = 0;
  [[maybe_unused]] const ssize_t taken = ::read(wake_.get(), &wakes, sizeof wakes);
  return (polled[0].revents & POLLIN) != 0;
}

int PtyLine::Server::sleepLimit() {
  milliseconds limit = std::min(kLongestSleep, device_.untilNextOutput());
  const std::lock_guard lock(mutex_);
  if (chatterInterval_) {
    limit = std::min(limit, ceil<milliseconds>(nextChatter_ - Clock::now()));
  }
  constexpr milliseconds kShortestSleep{1};
  return static_cast<int>(std::max(limit, kShortestSleep).count());
}

void PtyLine::Server::letTimePass(milliseconds elapsed) {
  elapsed = std::max(elapsed, milliseconds{0});
  deviceTime_ += elapsed;
  offer(device_.tick(elapsed));
}

// The device's time is rounded up before it receives, so that a delay that starts with what it
// receives never comes out short.
void PtyLine::Server::serveClient() {
  const Bytes bytes = pty_.read();
  const Clock::time_point now = Clock::now();
  letTimePass(ceil<milliseconds>(now - deviceTime_));
  const Bytes answer = device_.receive(bytes);
  log_.add(bytes, now);
  const std::lock_guard lock(mutex_);
  append(outgoing_, answer);
}

void PtyLine::Server::chatter() {
  {
    const std::lock_guard lock(mutex_);
    if (!chatterInterval_ || Clock::now() < nextChatter_) {
      return;
    }
    nextChatter_ = Clock::now() + *chatterInterval_;
  }
  offer(PtyLine::chatter());
}

/// What nobody asked for is lost, as on a UART, while the tty is full.
void PtyLine::Server::offer(const Bytes& bytes) {
  const std::lock_guard lock(mutex_);
  if (!full_) {
    append(outgoing_, bytes);
  }
}

void PtyLine::Server::flush() {
  const std::lock_guard lock(mutex_);
  if (!outgoing_.empty()) {
    pty_.write(outgoing_);
  }
  full_ = !outgoing_.empty();
}

}  // namespace orb::sim
