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
  std::chrono::milliseconds latency{0};  ///< between a message and its answer
  std::chrono::milliseconds spread{0};   ///< up to so much is added, drawn for each answer
  unsigned int baud = 0;                 ///< paces both directions, 10 bits a byte; 0: at once
  std::chrono::milliseconds chatterInterval{0};  ///< 0: no chatter
  std::string chatter = "chatter\r\n";
};

/// A device that stands in front of another one and makes its line slow or noisy.
class LineShaper : public Device {
 public:
  /// `behind` must outlive this. The seed decides what is drawn.
  LineShaper(Device& behind, const LineConditions& conditions, std::uint64_t seed);
  ~LineShaper() override;

  Bytes receive(const Bytes& bytes) override;
  Bytes tick(std::chrono::milliseconds elapsed) override;
  std::chrono::milliseconds untilNextOutput() const override;
  bool takeHangUp() override;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace orb::sim
