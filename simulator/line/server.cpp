#include "line/server.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace orb::sim {
namespace {

using std::chrono::ceil;
using std::chrono::floor;
using std::chrono::milliseconds;

/// What a client has not read, beyond which nothing more is read from it, as on a line with flow
/// control.
constexpr std::size_t kMostUnread = std::size_t{1} << 20;

/// Starts a thread that no signal of the program is delivered to; a SIGPIPE of its own neither.
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

Server::Server(Device& device, Port& port, ReceivedLog* log)
    : device_(device),
      port_(port),
      log_(log),
      wake_(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "eventfd"),
      thread_(start()) {}

Server::~Server() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake();
  thread_.join();
}

std::thread Server::start() {
  setUpClient();
  return startWithoutSignals([this] { run(); });
}

/// A new client finds its end set to the speed that the device has now.
void Server::setUpClient() {
  if (device_.speed() != 0) {
    port_.setClientSpeed(device_.speed());
  }
}

void Server::send(const Bytes& bytes) {
  {
    const std::lock_guard lock(mutex_);
    append(outgoing_, bytes);
  }
  wake();
}

void Server::wake() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(wake_.get(), &one, sizeof one);
}

void Server::run() {
  while (true) {
    const bool clientStirred = sleep();
    {
      const std::lock_guard lock(mutex_);
      if (stopping_) {
        return;
      }
    }
    letTimePass(floor<milliseconds>(Clock::now() - deviceTime_));
    if (clientStirred) {
      serveClient();
    }
    flush();
  }
}

/// Returns whether a client has written, come or gone.
bool Server::sleep() {
  short int events = device_.takesMore() ? POLLIN : 0;
  {
    const std::lock_guard lock(mutex_);
    if (outgoing_.size() > kMostUnread) {
      events = 0;
    }
    if (!outgoing_.empty()) {
      events |= POLLOUT;
    }
  }
  std::array<pollfd, 2> polled{{{port_.descriptor(), events, 0}, {wake_.get(), POLLIN, 0}}};
  ::poll(polled.data(), polled.size(), sleepLimit());
  std::uint64_t wakes = 0;
  [[maybe_unused]] const ssize_t taken = ::read(wake_.get(), &wakes, sizeof wakes);
  return (polled[0].revents & ~POLLOUT) != 0;
}

int Server::sleepLimit() const {
  // Another thread may change a device at any time without telling the line.
  constexpr milliseconds kLongestSleep{50};
  constexpr milliseconds kShortestSleep{1};
  return static_cast<int>(
      std::clamp(device_.untilNextOutput(), kShortestSleep, kLongestSleep).count());
}

void Server::letTimePass(milliseconds elapsed) {
  elapsed = std::max(elapsed, milliseconds{0});
  deviceTime_ += elapsed;
  if (const auto speed = device_.speed() != 0 ? port_.clientSpeed() : std::nullopt) {
    device_.setClientSpeed(*speed);
  }
  const Bytes unasked = device_.tick(elapsed);
  {
    const std::lock_guard lock(mutex_);
    // As on a UART, it is lost while the port is full.
    append(outgoing_, full_ ? Bytes{} : unasked);
  }
  hangUpIfDropped();
}

// The device's time is rounded up before it receives, so that a delay that starts with what it
// receives never comes out short.
void Server::serveClient() {
  const Bytes bytes = port_.read();
  if (bytes.empty()) {
    return;
  }
  letTimePass(ceil<milliseconds>(Clock::now() - deviceTime_));
  const Bytes answer = device_.receive(bytes);
  {
    const std::lock_guard lock(mutex_);
    append(outgoing_, answer);
    if (full_ && outgoing_.size() > kMostUnread && !std::exchange(hasComplained_, true)) {
      std::fputs(
          "orb-sim: a client sends without reading; no more is taken from it until it reads\n",
          stderr);
    }
  }
  hangUpIfDropped();
  if (log_ != nullptr) {
    log_->add(bytes);
  }
}

void Server::hangUpIfDropped() {
  if (!device_.takeHangUp()) {
    return;
  }
  flush();
  port_.hangUp();
  setUpClient();
  const std::lock_guard lock(mutex_);
  outgoing_.clear();
  full_ = false;
}

void Server::flush() {
  const std::lock_guard lock(mutex_);
  if (!outgoing_.empty()) {
    port_.write(outgoing_);
  }
  full_ = !outgoing_.empty();
}

}  // namespace orb::sim
