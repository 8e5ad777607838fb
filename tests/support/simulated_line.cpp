#include "support/simulated_line.h"

namespace orb::test {

SimulatedLine::SimulatedLine(sim::Device& device, const std::filesystem::path& link)
    : device_(device), link_(link), port_(link) {
  sleep_.onSleep = [this](Nanoseconds duration) { pass(duration); };
}

void SimulatedLine::pass(Nanoseconds duration) {
  if (const sim::Bytes written = port_->read(); !written.empty()) {
    deliver(device_.receive(written));
  }
  const auto before = std::chrono::floor<std::chrono::seconds>(now_);
  now_ += duration;
  clock_.advance(std::chrono::floor<std::chrono::seconds>(now_) - before);
  const auto elapsed = std::chrono::floor<std::chrono::milliseconds>(now_ - deviceTime_);
  deviceTime_ += elapsed;
  deliver(device_.tick(elapsed));
  if (now_ >= limit_) {
    throw WaitsForEver();
  }
}

/// What the tty has no room for is lost, as on a UART whose client does not read.
void SimulatedLine::deliver(sim::Bytes bytes) {
  const sim::Bytes all = bytes;
  if (!bytes.empty()) {
    port_->write(bytes);
  }
  delivered_.insert(delivered_.end(), all.begin(),
                    all.end() - static_cast<std::ptrdiff_t>(bytes.size()));
  if (device_.takeHangUp()) {
    port_.emplace(link_);
  }
}

}  // namespace orb::test
