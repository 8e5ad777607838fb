#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>

#include "orb-sim/device.h"
#include "orb-sim/pty_line.h"

namespace orb::test {

/// A device that stands in front of another one and, once told to, says text that is part of no
/// packet besides.
class Chatterbox : public sim::Device {
 public:
  explicit Chatterbox(sim::Device& device) : device_(device) {}

  /// May be called while a line serves the device.
  void startChatter(std::chrono::milliseconds interval) { interval_ = interval; }

  sim::Bytes receive(const sim::Bytes& bytes) override { return device_.receive(bytes); }

  sim::Bytes tick(std::chrono::milliseconds elapsed) override {
    sim::Bytes output = device_.tick(elapsed);
    sinceText_ += elapsed;
    if (sinceText_ >= interval_.load()) {
      sinceText_ = {};
      sim::append(output, {'c', 'h', 'a', 't', 't', 'e', 'r', '\r', '\n'});
    }
    return output;
  }

  std::chrono::milliseconds untilNextOutput() const override {
    return std::min(interval_.load(), device_.untilNextOutput());
  }

  bool takeHangUp() override { return device_.takeHangUp(); }

 private:
  sim::Device& device_;
  std::atomic<std::chrono::milliseconds> interval_{kNever};
  std::chrono::milliseconds sinceText_{0};
};

/// A line to a device, with such a chatterbox between.
class ChattyLine : private Chatterbox, public sim::PtyLine {
 public:
  ChattyLine(sim::Device& device, const std::filesystem::path& link)
      : Chatterbox(device), sim::PtyLine(static_cast<Chatterbox&>(*this), link) {}

  using Chatterbox::startChatter;
};

}  // namespace orb::test
