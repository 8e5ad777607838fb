#include "orb-sim/receiver.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "model/commands.h"
#include "model/draw.h"
#include "model/navigation.h"
#include "model/nmea_sentences.h"
#include "model/solution.h"
#include "model/starts.h"
#include "model/survey.h"

namespace orb::sim {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kWeek = std::chrono::hours{7 * 24};

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
  while (untilOutput() <= elapsed) {
    const bool isEpoch = untilEpoch() == untilOutput();
    const milliseconds step = untilOutput();
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
  Draw draw(0, 0, epochs_);  // the same in each run
  const milliseconds jitter{
      draw.below(static_cast<std::uint64_t>(state_.outputJitter.count()) + 1)};
  milliseconds due = uptime_ + state_.outputDelay + jitter;
  if (!outputs_.empty()) {
    due = std::max(due, outputs_.back().due);
  }
  outputs_.push_back({due, epochOutput(state_, ++epochs_)});
}

void Receiver::advance(milliseconds elapsed) {
  uptime_ += elapsed;
  sinceEpoch_ = talking_ ? sinceEpoch_ + elapsed : milliseconds{0};
  // A survey, for one, goes on from the very moment of the first fix.
  const milliseconds withoutFix = std::min(state_.startup.untilFix, elapsed);
  if (withoutFix > milliseconds{0}) {
    pass(withoutFix);
  }
  pass(elapsed - withoutFix);
}

void Receiver::pass(milliseconds elapsed) {
  const milliseconds time = receiverTime(elapsed);
  continueSurvey(state_, time);
  continueStart(state_, elapsed);
  state_.sinceBeginning += time;
  state_.time.timeOfWeek += time;
  while (state_.time.timeOfWeek >= kWeek) {
    state_.time.timeOfWeek -= kWeek;
    ++state_.time.week;
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

milliseconds Receiver::untilEpoch() const {
  constexpr milliseconds::rep kSecond = 1000;
  constexpr std::uint8_t kPowerSaving = 1;
  if (!talking_ || state_.updateRate == 0) {
    return kNever;
  }
  const milliseconds::rep rate = state_.powerMode == kPowerSaving ? 1 : state_.updateRate;
  if (state_.clockRate != 1) {
    return std::max(milliseconds{kSecond / rate} - sinceEpoch_, milliseconds{0});
  }
  const milliseconds::rep time = state_.time.timeOfWeek.count() % kSecond;
  const milliseconds::rep next = time * rate / kSecond + 1;
  return milliseconds{(next * kSecond + rate - 1) / rate - time};
}

/// Until an epoch ends, or the output of an earlier one leaves.
milliseconds Receiver::untilOutput() const {
  return outputs_.empty() ? untilEpoch() : std::min(untilEpoch(), outputs_.front().due - uptime_);
}

milliseconds Receiver::untilNextOutput() const {
  const std::lock_guard lock(mutex_);
  if (isSilent()) {
    return state_.startup.silence;
  }
  return reader_.midFrame() ? std::min(untilOutput(), kFrameTimeout - sinceByte_) : untilOutput();
}

State Receiver::state() const {
  const std::lock_guard lock(mutex_);
  return state_;
}

void Receiver::change(const std::function<void(State&)>& edit) {
  const std::lock_guard lock(mutex_);
  edit(state_);
}

Settings Receiver::savedSettings() const {
  const std::lock_guard lock(mutex_);
  return saved_;
}

void Receiver::startCold() {
  const std::lock_guard lock(mutex_);
  startAnew(state_, saved_, Start::Cold);
}

FrameReader::Counts Receiver::readerCounts() const {
  const std::lock_guard lock(mutex_);
  return reader_.counts();
}

void Receiver::talkFromTheStart() {
  const std::lock_guard lock(mutex_);
  talking_ = true;
}

}  // namespace orb::sim
