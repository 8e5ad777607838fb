#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include "orb-gnss/supervised_controller.h"

namespace orb {

/// What is heard on a line on which nobody speaks to the receiver.
struct LineReport {
  using State = orbSupervisedController::Line;

  State state = State::Silent;
  std::size_t bytes = 0;
  std::size_t sentences = 0;
  std::size_t packets = 0;
  /// Why the device cannot be opened.
  std::string problem;
};

/// What `bytes`, heard on the line, are. A sentence or packet counts where its checksum is right.
LineReport classify(std::string_view bytes);

/// That in words: "no byte arrives on the line".
std::string describe(const LineReport& report);

/// Listens to `device` for `time`, or until a packet or a sentence is heard. Does not write, does
/// not change the speed, and does not block on a silent line.
LineReport listenTo(const std::string& device, std::chrono::milliseconds time);

}  // namespace orb
