#pragma once

#include <filesystem>
#include <string>

#include "base/owned_descriptor.h"
#include "orb-sim/pulses.h"

namespace orb::sim {

/// A file that a line is appended to for each event at the timing outputs; it is made where there
/// is none. Of a FIFO that nobody reads, or whose reader lags behind, lines are lost.
class PulseFile {
 public:
  /// Throws std::system_error where the file cannot be opened.
  explicit PulseFile(std::filesystem::path file);

  void append(const PulseEvent& event);

 private:
  void open();

  const std::filesystem::path path_;
  OwnedDescriptor file_;
  bool hasComplained_ = false;
};

}  // namespace orb::sim
