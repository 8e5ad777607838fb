#pragma once

#include <chrono>

#include "orb-sim/bytes.h"

namespace orb::sim {

/// Whatever is at the far end of a serial line: bytes in, bytes out. A device does no I/O and has
/// no clock of its own; the line that it is plugged into hands it both.
///
/// A line calls its device from the line's thread. The devices of this library can be changed and
/// inspected from other threads meanwhile.
class Device {
 public:
  /// What untilNextOutput() answers when only received bytes can make the device speak.
  static constexpr std::chrono::milliseconds kNever = std::chrono::milliseconds::max();

  Device() = default;
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;
  virtual ~Device() = default;

  /// Takes bytes as they come from the line, cut anywhere; returns what the device says at once.
  virtual Bytes receive(const Bytes& bytes) = 0;

  /// Lets `elapsed` pass; returns what the device says of its own accord in that time.
  virtual Bytes tick(std::chrono::milliseconds elapsed) = 0;

  /// How long the line may sleep before it calls tick() again, if no bytes arrive. 0 means that
  /// something is due.
  virtual std::chrono::milliseconds untilNextOutput() const {
    constexpr std::chrono::milliseconds kPollInterval{10};
    return kPollInterval;
  }

  /// True once for each time that the device has dropped the line: clients that hold it open then
  /// see a hang-up, and have to open it anew. The line asks after each receive() and tick().
  virtual bool takeHangUp() { return false; }

  /// Whether the device takes more bytes now. As long as it does not, the line reads none from its
  /// clients, whose writes then wait.
  virtual bool takesMore() const { return true; }

  /// The speed in baud that the device talks at, where it has one; otherwise 0. Where the line's
  /// kind has a speed, a new client finds it set to this.
  virtual unsigned int speed() const { return 0; }

  /// The speed of the client's end; 0: one that no device has. A line that knows it says so before
  /// each receive() and tick() of a device that has a speed.
  virtual void setClientSpeed(unsigned int /*baud*/) {}
};

}  // namespace orb::sim
