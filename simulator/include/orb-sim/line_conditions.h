#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "orb-sim/bytes.h"
#include "orb-sim/device.h"

namespace orb::sim {

/// What every byte between a receiver and its client has to go through.
struct LineConditions {
  /// Between a message and its answer: the receiver hears it so much later. What the receiver says
  /// of its own accord is not held up.
  std::chrono::milliseconds latency{0};
  std::chrono::milliseconds spread{0};  ///< up to so much is added, drawn for each message
  unsigned int baud = 0;                ///< paces both directions, 10 bits a byte; 0: at once
  /// Bytes go wrong, both ways, while the client's end is set to another speed than the device's;
  /// then the device's speed, and not `baud`, paces them, unless `baud` is 0.
  bool checksSpeed = false;
  std::chrono::milliseconds chatterInterval{0};  ///< 0: no chatter
  std::string chatter = "chatter\r\n";           ///< is left out while the line carries an answer
};

/// A device that stands in front of another one and makes its line slow or noisy.
///
/// On a paced line, some 4096 bytes wait for their turn. Beyond them, what the device says of its
/// own accord is lost, as in a receiver that is set to say more than its line carries; answers are
/// not. Where the device drops the line, everything that is on its way is lost.
class LineShaper : public Device {
 public:
  /// `device` must outlive this. The seed decides what is drawn. No duration may be negative.
  LineShaper(Device& device, const LineConditions& conditions, std::uint64_t seed);
  ~LineShaper() override;

  Bytes receive(const Bytes& bytes) override;
  Bytes tick(std::chrono::milliseconds elapsed) override;
  std::chrono::milliseconds untilNextOutput() const override;
  bool takeHangUp() override;
  bool takesMore() const override;
  unsigned int speed() const override;
  void setClientSpeed(unsigned int baud) override;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace orb::sim
