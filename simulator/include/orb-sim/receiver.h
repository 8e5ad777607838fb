#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

#include "orb-sim/bytes.h"
#include "orb-sim/device.h"
#include "orb-sim/frame.h"
#include "orb-sim/pulses.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// The model of a GNSS timing receiver.
///
///     State state;
///     state.sky = ordinarySky();
///     Receiver receiver(state);
///     Bytes answer = receiver.receive(frame(0x1000));     // the update rate is queried
///     Bytes output = receiver.tick(std::chrono::seconds(1));  // a second passes
///
/// A command that it knows, of the right length, is acknowledged; any other is refused. A query is
/// acknowledged and then answered. Settings are kept as they come, whatever their values, and
/// reported by their queries.
///
/// It stays silent until it has first answered something (see talkFromTheStart()); from then on it
/// sends, once an epoch, NMEA sentences or binary navigation data, as its output type says. Epochs
/// are at whole seconds of its clock and whole fractions of them, while that goes about as fast as
/// the line's (see State::clockRate).
///
/// A setting whose attribute byte is 1 outlives a restart, any other is lost by it. The settings
/// that the receiver is constructed with outlive it, too.
class Receiver : public Device {
 public:
  /// A frame that stays incomplete for so long without another byte is given up.
  static constexpr std::chrono::milliseconds kFrameTimeout{1000};

  /// As constructed it is long since up, with these settings saved.
  explicit Receiver(State state = {})
      : state_(std::move(state)), saved_(static_cast<const Settings&>(state_)) {
    followSettings();
  }

  Bytes receive(const Bytes& bytes) override;
  Bytes tick(std::chrono::milliseconds elapsed) override;
  std::chrono::milliseconds untilNextOutput() const override;

  /// That of port 0, which it is plugged in at. The command for the serial port changes it when it
  /// has been acknowledged; another port, or a number that stands for no speed, leaves it alone.
  unsigned int speed() const override;

  /// A copy of the state. Its time is that of the last receive() or tick().
  State state() const;

  /// Changes the state in place, as in `change([](State& state) { state.powerMode = 1; })`. The
  /// function must not call the receiver. A restart forgets the settings that are changed so.
  void change(const std::function<void(State&)>& edit);

  /// The settings that it will have after a restart.
  Settings savedSettings() const;

  /// Switches it on as one that has been off for long: it knows neither time nor place, and has
  /// its first fix after state().startTimes.cold.
  void startCold();

  /// What the receiver made of the bytes that reached it.
  FrameReader::Counts readerCounts() const;

  /// Sends navigation output without waiting to be spoken to first.
  void talkFromTheStart();

  /// From now on, `listener` is called for what happens at the timing outputs, within the call in
  /// whose time it happens: both edges of a pulse when its second begins, the frequency of the
  /// second output at once and whenever it changes.
  void listenToPulses(PulseListener listener);

 private:
  Bytes answer(const std::vector<Frame>& frames);
  Bytes speak(std::chrono::milliseconds elapsed);
  void advance(std::chrono::milliseconds elapsed);
  void letEventsHappen();
  void goOn(std::chrono::milliseconds elapsed);
  void pass(std::chrono::milliseconds elapsed);
  std::chrono::milliseconds untilSecond() const;
  void tellPulses(const GpsTime& before);
  void followSettings();
  std::chrono::milliseconds receiverTime(std::chrono::milliseconds elapsed);
  bool isSilent() const;
  std::chrono::milliseconds untilEpoch() const;
  std::chrono::milliseconds untilOutput() const;
  std::chrono::milliseconds untilEvent() const;
  std::chrono::milliseconds untilStep() const;
  std::chrono::milliseconds::rep epochRate() const;
  void endEpoch();

  mutable std::mutex mutex_;
  State state_;
  Settings saved_;
  FrameReader reader_;
  std::chrono::milliseconds sinceEpoch_{0};
  std::chrono::milliseconds sinceByte_{0};
  std::chrono::milliseconds uptime_{0};
  double clockRemainder_ = 0;  // of a millisecond
  unsigned int epochs_ = 0;
  bool talking_ = false;
  unsigned int speed_ = 115200;
  PulseListener pulseListener_;
  std::optional<std::uint32_t> toldFrequency_;

  struct Output {
    std::chrono::milliseconds due;  ///< by the time up
    Bytes bytes;
  };
  std::deque<Output> outputs_;
};

}  // namespace orb::sim
