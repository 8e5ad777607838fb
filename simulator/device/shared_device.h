#pragma once

#include <array>
#include <mutex>

#include "orb-sim/device.h"

namespace orb::sim {

/// One device on two lines, as with two wires soldered to one port: it hears what either client
/// says, and what it says goes to both. Its time passes on the first line.
class SharedDevice {
 public:
  /// `device` must outlive this.
  explicit SharedDevice(Device& device) : device_(device) {}

  Device& first() { return ends_[0]; }
  Device& second() { return ends_[1]; }

 private:
  /// What one of the lines is plugged into.
  class End : public Device {
   public:
    End(SharedDevice& shared, std::size_t self) : shared_(shared), self_(self) {}

    Bytes receive(const Bytes& bytes) override;
    Bytes tick(std::chrono::milliseconds elapsed) override;
    std::chrono::milliseconds untilNextOutput() const override;
    bool takeHangUp() override;
    bool takesMore() const override;
    unsigned int speed() const override;
    void setClientSpeed(unsigned int baud) override;

   private:
    SharedDevice& shared_;
    const std::size_t self_;
  };

  Bytes share(const Bytes& said, std::size_t self);

  Device& device_;
  std::array<End, 2> ends_{End(*this, 0), End(*this, 1)};

  std::mutex mutex_;  ///< guards what follows, and orders the device's calls
  std::array<Bytes, 2> waiting_;
  std::array<bool, 2> hangUps_{};
};

}  // namespace orb::sim
