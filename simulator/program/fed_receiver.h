#pragma once

#include <fcntl.h>

#include <filesystem>

#include "base/owned_descriptor.h"
#include "orb-sim/scenario.h"

namespace orb::sim {

/// A receiver whose antenna is fed as the port expander on the I2C bus has been set, of which
/// `registers` is the text. It looks there each time that the line calls it.
class FedReceiver : public Device {
 public:
  FedReceiver(const Scenario& scenario, const std::filesystem::path& registers)
      : receiver_(scenario),
        registers_(::open(registers.c_str(), O_RDONLY | O_CLOEXEC), registers.string()) {}

  Bytes receive(const Bytes& bytes) override;
  Bytes tick(std::chrono::milliseconds elapsed) override;
  std::chrono::milliseconds untilNextOutput() const override { return receiver_.untilNextOutput(); }
  bool takeHangUp() override { return receiver_.takeHangUp(); }
  bool takesMore() const override { return receiver_.takesMore(); }
  unsigned int speed() const override { return receiver_.speed(); }
  void setClientSpeed(unsigned int baud) override { receiver_.setClientSpeed(baud); }

  void listenToPulses(PulseListener listener) { receiver_.listenToPulses(std::move(listener)); }

 private:
  void feedAntenna();

  ScenarioDevice receiver_;
  const OwnedDescriptor registers_;
};

}  // namespace orb::sim
