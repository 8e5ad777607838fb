#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "line/far_end.h"

namespace orb::bench {

/// A pty that text without start bytes comes in on, byte by byte, as fast as 115200 baud allow.
class TextFeed {
 public:
  static constexpr int kBytesPerSecond = 11520;

  TextFeed();
  TextFeed(const TextFeed&) = delete;
  TextFeed& operator=(const TextFeed&) = delete;
  ~TextFeed();

  /// The device to open.
  const std::string& tty() const { return pty_.tty; }

  /// How many bytes the line has taken.
  long bytes() const { return bytes_; }

 private:
  void feed();

  RawPty pty_;
  std::atomic<long> bytes_{0};
  std::atomic<bool> stopping_{false};
  std::thread thread_;  // the last, since it uses the others
};

}  // namespace orb::bench
