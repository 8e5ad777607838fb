#include "line/pty_port.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace orb::sim {
namespace {

// A client that reads at all has read by then; one that does not must not hold the line up.
constexpr std::chrono::milliseconds kTimeToRead{250};

}  // namespace

PtyPort::PtyPort(const std::filesystem::path& link)
    : pty_(std::make_unique<Pty>()), link_(link, pty_->path()), path_(pty_->path()) {}

std::string PtyPort::path() const {
  const std::lock_guard lock(mutex_);
  return path_;
}

// The new pty is in its place before the old one goes, so that a client that sees the hang-up finds
// it at once.
void PtyPort::hangUp() {
  pty_->waitUntilRead(kTimeToRead);
  try {
    auto next = std::make_unique<Pty>();
    link_.pointTo(next->path());
    {
      const std::lock_guard lock(mutex_);
      path_ = next->path();
    }
    pty_ = std::move(next);
  } catch (const std::system_error&) {
  }
}

}  // namespace orb::sim
