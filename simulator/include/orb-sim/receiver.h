#pragma once

#include <chrono>
#include <functional>
#include <mutex>

#include "orb-sim/bytes.h"
#include "orb-sim/device.h"
#include "orb-sim/frame.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// The model of a GNSS timing receiver.
///
/// A command that it knows, of the right length, is acknowledged; any other is refused. A query is
/// acknowledged and then answered. Settings are kept as they come, whatever their values, and
/// reported by their queries.
///
/// It stays silent until it has first answered something (see talkFromTheStart()); from then on it
/// sends, once an epoch, NMEA sentences or binary navigation data, as its output type says.
class Receiver : public Device {
 public:
  /// A frame that stays incomplete for so long without another byte is given up.
  static constexpr std::chrono::milliseconds kFrameTimeout{1000};

  explicit Receiver(State state = {}) : state_(std::move(state)) {}

  Bytes receive(const Bytes& bytes) override;
  Bytes tick(std::chrono::milliseconds elapsed) override;
  std::chrono::milliseconds untilNextOutput() const override;

  /// A copy of the state. Its time is that of the last receive() or tick().
  State state() const;

  /// Changes the state in place, as in `change([](State& state) { state.powerMode = 1; })`. The
  /// function must not call the receiver.
  void change(const std::function<void(State&)>& edit);

  /// What the receiver made of the bytes that reached it.
  FrameReader::Counts readerCounts() const;

  /// Sends navigation output without waiting to be spoken to first.
  void talkFromTheStart();

 private:
  Bytes answer(const std::vector<Frame>& frames);
  void advance(std::chrono::milliseconds elapsed);
  std::chrono::milliseconds epoch() const;

  mutable std::mutex mutex_;
  State state_;
  FrameReader reader_;
  std::chrono::milliseconds sinceEpoch_{0};
  std::chrono::milliseconds sinceByte_{0};
  unsigned int epochs_ = 0;
  bool talking_ = false;
};

}  // namespace orb::sim
