#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "orb-sim/replay.h"
#include "orb-sim/trace.h"

namespace orb::sim {

/// A trace that is played back. What it does not have, of what its client sends, is told on
/// standard error.
class ReplayedTrace {
 public:
  /// What is done about a packet that the trace does not have.
  enum class Unknown {
    Refuse,
    Silent,
    Exit,  ///< silent, and the playing ends
  };

  ReplayedTrace(std::vector<TraceRecord> trace, ReplayDevice::Pace pace, Unknown unknown)
      : trace_(std::move(trace)), pace_(pace), unknown_(unknown) {}

  /// The receiver's side. `end` is called, in the line's thread, where the playing is to end.
  std::unique_ptr<Device> receiver(std::function<void()> end);

  /// Says how many packets the trace did not have, where there were any. Returns the exit status:
  /// `status`, or kExitOwnFailure where such a packet has ended the playing.
  int conclude(int status) const;

 private:
  Bytes answerUnknown(const Frame& packet, const std::function<void()>& end);

  const std::vector<TraceRecord> trace_;
  const ReplayDevice::Pace pace_;
  const Unknown unknown_;
  std::atomic<std::size_t> unknownPackets_ = 0;
};

}  // namespace orb::sim
