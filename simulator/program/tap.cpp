#include "program/tap.h"

#include <poll.h>

#include <array>
#include <cerrno>
#include <utility>

#include "line/available_bytes.h"
#include "program/failure.h"
#include "trace/utc_time.h"

namespace orb::sim {
namespace {

// A port that does not take more leaves what clients write in their tty, whose flow control they
// then see.
constexpr std::size_t kMostForPort = 16384;

}  // namespace

Tap::Tap(OwnedDescriptor port, std::string name, const std::filesystem::path& link,
         std::optional<TraceWriter> trace, const ListingForm& form)
    : port_(std::move(port)),
      name_(std::move(name)),
      trace_(std::move(trace)),
      transcript_(text_, form) {
  transcript_.setStart(wallTimeNow() - now());
  if (!link.empty()) {
    client_.emplace(link);
  }
}

void Tap::run(const EndSignals& end) {
  while (passOn(end)) {
    transcript_.reach(now());
    show();
  }
  transcript_.finish();
  show();
}

/// Sleeps until there is something to pass on, and does so. Returns whether to go on.
bool Tap::passOn(const EndSignals& end) {
  const auto events = [](bool reading, bool writing) {
    return static_cast<short>((reading ? POLLIN : 0) | (writing ? POLLOUT : 0));
  };
  std::array<pollfd, 3> polled{{
      {end.descriptor(), POLLIN, 0},
      {port_.get(), events(true, !toPort_.empty()), 0},
      // poll leaves out what is negative.
      {client_ ? client_->descriptor() : -1,
       events(toPort_.size() < kMostForPort, !toClient_.empty()), 0},
  }};
  const auto patience = std::chrono::ceil<std::chrono::milliseconds>(Transcript::kPatience);
  const int limit = transcript_.isMidItem() ? static_cast<int>(patience.count()) : -1;
  if (poll(polled.data(), polled.size(), limit) < 0) {
    if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "poll");
    }
    return true;
  }
  if ((polled[1].revents & ~POLLOUT) != 0) {
    takeFromPort();
  }
  if ((polled[2].revents & POLLIN) != 0) {
    takeFromClient();
  }
  if (client_) {
    client_->write(toClient_);
  }
  if (!writeAvailable(port_.get(), toPort_)) {
    throw Failure(name_ + " has hung up");
  }
  return polled[0].revents == 0;
}

void Tap::takeFromPort() {
  const std::optional<Bytes> bytes = readAvailable(port_.get());
  if (!bytes) {
    throw Failure(name_ + " has hung up");
  }
  if (bytes->empty()) {
    return;
  }
  note(Speaker::Receiver, *bytes);
  // As on a UART, what comes is lost while nobody takes it.
  if (client_ && toClient_.empty()) {
    toClient_ = *bytes;
  }
}

void Tap::takeFromClient() {
  const Bytes bytes = client_->read();
  if (bytes.empty()) {
    return;
  }
  note(Speaker::Client, bytes);
  append(toPort_, bytes);
}

void Tap::note(Speaker from, const Bytes& bytes) {
  const TraceRecord record{now(), from, bytes};
  if (trace_) {
    trace_->write(record);
  }
  transcript_.add(record);
}

/// Shows what the transcript has written. That it cannot be shown is no reason to cut the client
/// off.
void Tap::show() {
  display_.show(text_.str());
  text_.str({});
}

std::chrono::microseconds Tap::now() const {
  return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start_);
}

}  // namespace orb::sim
