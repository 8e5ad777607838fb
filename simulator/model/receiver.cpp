#include "orb-sim/receiver.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>

#include "model/commands.h"
#include "model/draw.h"
#include "model/gps_time.h"
#include "model/navigation.h"
#include "model/nmea_sentences.h"
#include "model/solution.h"
#include "model/starts.h"
#include "model/survey.h"

namespace orb::sim {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds::rep kSecond = 1000;

/// Keeps the setting and, where one follows it, its attribute byte. Returns whether that asks for
/// the setting to outlive a restart.
bool store(Settings& settings, const Command& command, const Bytes& body) {
  constexpr std::uint8_t kKeep = 1;
  BodyReader reader(body);
  command.store(settings, reader);
  if (!command.hasAttribute) {
    return false;
  }
  settings.attributes[command.id] = body.back();
  return body.back() == kKeep;
}

Bytes answer(State& state, Settings& saved, const Frame& packet) {
  const Command* const command = findCommand(packet.id());
  if (command == nullptr || command->length != packet.payload.size()) {
    return refuse(packet.id());
  }
  Bytes answer = acknowledge(command->id);
  const Bytes body = packet.body();
  if (command->store != nullptr) {
    if (store(state, *command, body)) {
      store(saved, *command, body);
    }
    if (command->id == message::kSetTiming) {
      beginSurvey(state);
    }
  } else if (command->report != nullptr) {
    BodyWriter reply;
    command->report(state, reply);
    append(answer, frame(command->reply, reply.body()));
  } else {
    command->obey(state, saved, body);
  }
  return answer;
}

Bytes epochOutput(const State& state, unsigned int epoch) {
  if (state.outputType == OutputType::Nmea) {
    const std::string sentences = nmeaSentences(state, solve(state), epoch);
    return Bytes(sentences.begin(), sentences.end());
  }
  const bool due = state.navMessageInterval != 0 && epoch % state.navMessageInterval == 0;
  return state.outputType == OutputType::Binary && due ? navigationData(state, solve(state))
                                                       : Bytes{};
}

/// Whether the receiver's clock tells its epochs. One that is far too fast or too slow does not, so
/// that the update rate is what it is on the line.
bool tellsEpochs(double clockRate) { return clockRate >= 0.99 && clockRate <= 1.01; }

/// From the last epoch, by the receiver's clock.
milliseconds sinceEpochInstant(milliseconds time, milliseconds::rep rate) {
  const milliseconds::rep passed = time.count() % kSecond;
  return milliseconds{passed - (passed * rate / kSecond * kSecond + rate - 1) / rate};
}

}  // namespace

Bytes Receiver::receive(const Bytes& bytes) {
  const std::lock_guard lock(mutex_);
  sinceByte_ = milliseconds{0};
  return isSilent() ? Bytes{} : answer(reader_.push(bytes));
}

Bytes Receiver::answer(const std::vector<Frame>& frames) {
  Bytes answers;
  for (const Frame& command : frames) {
    append(answers, sim::answer(state_, saved_, command));
    if (isSilent()) {
      reader_.abandon();  // what follows a restart is not heard
      break;
    }
  }
  talking_ = talking_ || !answers.empty();
  followSettings();
  return answers;
}

Bytes Receiver::tick(milliseconds elapsed) {
  const std::lock_guard lock(mutex_);
  const milliseconds silent = std::min(state_.startup.silence, elapsed);
  if (isSilent()) {
    advance(silent);
    sinceEpoch_ = milliseconds{0};
    outputs_.clear();
  }
  return isSilent() ? Bytes{} : speak(elapsed - silent);
}

Bytes Receiver::speak(milliseconds elapsed) {
  Bytes output;
  sinceByte_ += elapsed;
  // An event at the time of an epoch comes after it.
  while (untilStep() <= elapsed) {
    const milliseconds step = untilStep();
    const bool isEpoch = untilEpoch() == step;
    advance(step);
    elapsed -= step;
    if (isEpoch) {
      endEpoch();
    }
    for (; !outputs_.empty() && outputs_.front().due <= uptime_; outputs_.pop_front()) {
      append(output, outputs_.front().bytes);
    }
  }
  advance(elapsed);
  if (reader_.midFrame() && sinceByte_ >= kFrameTimeout) {
    append(output, answer(reader_.abandon()));
    sinceByte_ = milliseconds{0};
  }
  return output;
}

void Receiver::endEpoch() {
  sinceEpoch_ = milliseconds{0};
  // Of a clock that drifts, the line's milliseconds miss the epoch by less than one of them.
  const milliseconds late = tellsEpochs(state_.clockRate)
                                ? sinceEpochInstant(state_.time.timeOfWeek, epochRate())
                                : milliseconds{0};
  Draw draw(state_.seed, 0, epochs_);
  const milliseconds jitter{
      draw.below(static_cast<std::uint64_t>(state_.outputJitter.count()) + 1)};
  milliseconds due = uptime_ + state_.outputDelay + jitter;
  if (!outputs_.empty()) {
    due = std::max(due, outputs_.back().due);
  }
  state_.time.timeOfWeek -= late;
  outputs_.push_back({due, epochOutput(state_, ++epochs_)});
  state_.time.timeOfWeek += late;
}

void Receiver::advance(milliseconds elapsed) {
  letEventsHappen();
  for (; untilEvent() < elapsed; letEventsHappen()) {
    const milliseconds step = untilEvent();
    goOn(step);
    elapsed -= step;
  }
  goOn(elapsed);
}

void Receiver::letEventsHappen() {
  std::vector<TimedEvent>& events = state_.timeline;
  for (; untilEvent() == milliseconds{0}; events.erase(events.begin())) {
    const TimedEvent& event = events.front();
    state_.signals = event.signals.value_or(state_.signals);
    state_.interferenceStatus = event.interferenceStatus.value_or(state_.interferenceStatus);
    state_.clockRate = event.clockRate.value_or(state_.clockRate);
    sim::advance(state_.time, event.jump);
  }
}

void Receiver::goOn(milliseconds elapsed) {
  uptime_ += elapsed;
  sinceEpoch_ = talking_ ? sinceEpoch_ + elapsed : milliseconds{0};
  // A survey, for one, goes on from the very moment of the first fix.
  do {
    const milliseconds untilFix = state_.startup.untilFix;
    const milliseconds step =
        std::min({elapsed, untilSecond(), untilFix > milliseconds{0} ? untilFix : elapsed});
    pass(step);
    elapsed -= step;
  } while (elapsed > milliseconds{0});
}

void Receiver::pass(milliseconds elapsed) {
  const milliseconds time = receiverTime(elapsed);
  const GpsTime before = state_.time;
  continueSurvey(state_, time);
  continueStart(state_, elapsed);
  state_.sinceBeginning += time;
  sim::advance(state_.time, time);
  tellPulses(before);
}

/// Until the next second of its clock begins, where that matters to somebody.
milliseconds Receiver::untilSecond() const {
  if (!pulseListener_ || !(state_.clockRate > 0)) {
    return kNever;
  }
  const auto left = static_cast<double>(untilSecondOf(state_.time).count());
  const double onLine = std::ceil((left - clockRemainder_) / state_.clockRate);
  return onLine < static_cast<double>(std::chrono::hours{1} / milliseconds{1})
             ? std::max(milliseconds{static_cast<milliseconds::rep>(onLine)}, milliseconds{1})
             : kNever;
}

/// Of a clock that is faster than the line's, several seconds may have begun.
void Receiver::tellPulses(const GpsTime& before) {
  if (!pulseListener_ || untilSecondOf(before) > between(before, state_.time)) {
    return;
  }
  State then = state_;
  then.time = before;
  for (milliseconds left = untilSecondOf(before); left <= between(then.time, state_.time);
       left = untilSecondOf(then.time)) {
    for (const PulseEvent& edge : pulseEdges(then)) {
      pulseListener_(edge);
    }
    sim::advance(then.time, left);
  }
}

/// The line's speed, and what listeners to the pulses know of the second output, are as set.
void Receiver::followSettings() {
  const SerialPort& serial = state_.serialPort;
  if (serial.port == 0 && serial.baudCode < std::size(kSerialSpeeds)) {
    speed_ = kSerialSpeeds[serial.baudCode];
  }
  if (pulseListener_ && toldFrequency_ != state_.pps2Frequency) {
    toldFrequency_ = state_.pps2Frequency;
    pulseListener_(frequencyEvent(state_));
  }
}

milliseconds Receiver::receiverTime(milliseconds elapsed) {
  constexpr double kFastest = 1e6;
  const double rate = state_.clockRate > 0 ? std::min(state_.clockRate, kFastest) : 0;
  const double time = static_cast<double>(elapsed.count()) * rate + clockRemainder_;
  const double whole = std::floor(time);
  clockRemainder_ = time - whole;
  return milliseconds(static_cast<milliseconds::rep>(whole));
}

bool Receiver::isSilent() const { return state_.startup.silence > milliseconds{0}; }

milliseconds::rep Receiver::epochRate() const {
  constexpr std::uint8_t kPowerSaving = 1;
  return state_.powerMode == kPowerSaving ? 1 : state_.updateRate;
}

milliseconds Receiver::untilEpoch() const {
  if (!talking_ || state_.updateRate == 0) {
    return kNever;
  }
  const milliseconds::rep rate = epochRate();
  if (!tellsEpochs(state_.clockRate)) {
    return std::max(milliseconds{kSecond / rate} - sinceEpoch_, milliseconds{0});
  }
  const milliseconds::rep time = state_.time.timeOfWeek.count() % kSecond;
  const milliseconds::rep next = time * rate / kSecond + 1;
  const milliseconds::rep left = (next * kSecond + rate - 1) / rate - time;
  // Where the clock drifts, rounding must not leave it short of the epoch.
  const double roundingMargin = state_.clockRate == 1 ? 0 : 1e-6;  // of a millisecond
  const double onLine =
      (static_cast<double>(left) - clockRemainder_) / state_.clockRate + roundingMargin;
  return milliseconds{static_cast<milliseconds::rep>(std::ceil(onLine))};
}

milliseconds Receiver::untilEvent() const {
  return state_.timeline.empty() ? kNever
                                 : std::max(state_.timeline.front().at - uptime_, milliseconds{0});
}

/// Until an epoch ends, or the output of an earlier one leaves.
milliseconds Receiver::untilOutput() const {
  return outputs_.empty() ? untilEpoch() : std::min(untilEpoch(), outputs_.front().due - uptime_);
}

/// Until anything happens.
milliseconds Receiver::untilStep() const { return std::min(untilOutput(), untilEvent()); }

milliseconds Receiver::untilNextOutput() const {
  const std::lock_guard lock(mutex_);
  if (isSilent()) {
    return state_.startup.silence;
  }
  const milliseconds next = std::min(untilOutput(), untilSecond());
  return reader_.midFrame() ? std::min(next, kFrameTimeout - sinceByte_) : next;
}

unsigned int Receiver::speed() const {
  const std::lock_guard lock(mutex_);
  return speed_;
}

State Receiver::state() const {
  const std::lock_guard lock(mutex_);
  return state_;
}

void Receiver::change(const std::function<void(State&)>& edit) {
  const std::lock_guard lock(mutex_);
  edit(state_);
  followSettings();
}

Settings Receiver::savedSettings() const {
  const std::lock_guard lock(mutex_);
  return saved_;
}

void Receiver::startCold() {
  const std::lock_guard lock(mutex_);
  startAnew(state_, saved_, Start::Cold);
  followSettings();
}

FrameReader::Counts Receiver::readerCounts() const {
  const std::lock_guard lock(mutex_);
  return reader_.counts();
}

void Receiver::talkFromTheStart() {
  const std::lock_guard lock(mutex_);
  talking_ = true;
}

void Receiver::listenToPulses(PulseListener listener) {
  const std::lock_guard lock(mutex_);
  pulseListener_ = std::move(listener);
  toldFrequency_.reset();
  followSettings();
}

}  // namespace orb::sim
