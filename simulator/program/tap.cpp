#include "program/tap.h"

#include <poll.h>

#include <array>
#include <cerrno>
#include <iostream>
#include <utility>

#include "program/failure.h"
#include "program/standard_streams.h"

namespace orb::sim {
namespace {

constexpr std::size_t kBlock = 4096;

// A port that does not take more leaves what clients write in their tty, whose flow control they
// then see.
constexpr std::size_t kMostForPort = 4 * kBlock;

}  // namespace

Tap::Tap(OwnedDescriptor port, std::string name, const std::filesystem::path& link,
         std::optional<TraceWriter> trace)
    : port_(std::move(port)),
      name_(std::move(name)),
      link_(link, pty_.path()),
      trace_(std::move(trace)),
      transcript_(std::cout) {}

void Tap::run(const EndSignals& end) {
  checkDisplay();
  while (wait(end)) {
    if (portCanBeRead_) takeFromPort();
    if (clientCanBeRead_) takeFromClient();
    passOn();
    transcript_.letTimePass(now());
    checkDisplay();
  }
  transcript_.finish();
  checkDisplay();
}

/// Sleeps until there is something to do. Returns whether it shall go on.
bool Tap::wait(const EndSignals& end) {
  const auto events = [](bool reading, bool writing) {
    return static_cast<short>((reading ? POLLIN : 0) | (writing ? POLLOUT : 0));
  };
  std::array<pollfd, 3> polled{{
      {end.descriptor(), POLLIN, 0},
      {port_.get(), events(true, !toPort_.empty()), 0},
      {pty_.descriptor(), events(toPort_.size() < kMostForPort, !toClient_.empty()), 0},
  }};
  const auto patience = std::chrono::ceil<std::chrono::milliseconds>(Transcript::kPatience);
  const int limit = transcript_.isMidItem() ? static_cast<int>(patience.count()) : -1;
  if (poll(polled.data(), polled.size(), limit) < 0 && errno != EINTR) {
    throw std::system_error(errno, std::generic_category(), "poll");
  }
  portCanBeRead_ = (polled[1].revents & ~POLLOUT) != 0;
  clientCanBeRead_ = (polled[2].revents & POLLIN) != 0;
  return polled[0].revents == 0;
}

void Tap::takeFromPort() {
  Bytes bytes(kBlock);
  const ssize_t count = read(port_.get(), bytes.data(), bytes.size());
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (count <= 0) throw Failure(name_ + " has hung up");
  bytes.resize(static_cast<std::size_t>(count));
  note(Speaker::Receiver, bytes);
  // As on a UART, what comes is lost while nobody takes it.
  if (toClient_.empty()) append(toClient_, bytes);
}

void Tap::takeFromClient() {
  const Bytes bytes = pty_.read();
  if (bytes.empty()) return;
  note(Speaker::Client, bytes);
  append(toPort_, bytes);
}

void Tap::passOn() {
  if (!toClient_.empty()) pty_.write(toClient_);
  if (toPort_.empty()) return;
  const ssize_t count = write(port_.get(), toPort_.data(), toPort_.size());
  if (count < 0 && errno != EAGAIN && errno != EINTR) throw Failure(name_ + " has hung up");
  if (count > 0) toPort_.erase(toPort_.begin(), toPort_.begin() + count);
}

void Tap::note(Speaker from, const Bytes& bytes) {
  const TraceRecord record{now(), from, bytes};
  if (trace_) trace_->write(record);
  transcript_.add(record);
}

/// Shows what has been printed. That it cannot be shown is no reason to cut the client off.
void Tap::checkDisplay() { isDisplayLost_ = isDisplayLost_ || warnOfLostOutput(); }

std::chrono::microseconds Tap::now() const {
  return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start_);
}

}  // namespace orb::sim
