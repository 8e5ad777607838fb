#include "orb-sim/receiver.h"

#include <algorithm>

#include "model/message_ids.h"
#include "model/messages.h"
#include "model/navigation.h"

namespace orb::sim {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kWeek = std::chrono::hours{7 * 24};

/// Keeps the setting and, where one follows it, its attribute byte.
void store(State& state, const Setting& setting, const Bytes& body) {
  BodyReader reader(body);
  setting.store(state, reader);
  if (!reader.atEnd()) {
    state.attributes[setting.id] = body.back();
  }
}

Bytes reply(const State& state, const Query& query) {
  BodyWriter body;
  query.report(state, body);
  return frame(query.replyId, body.body());
}

Bytes answer(State& state, const Frame& command) {
  const std::uint16_t id = command.id();
  const auto fits = [&](const auto* row) {
    return row != nullptr && row->length == command.payload.size();
  };
  Bytes answer = acknowledge(id);
  if (const Setting* setting = findSetting(id); fits(setting)) {
    store(state, *setting, command.body());
  } else if (const Query* query = findQuery(id); fits(query)) {
    append(answer, reply(state, *query));
  } else if (const Order* order = findOrder(id); fits(order)) {
    order->obey(state, command.body());
  } else {
    return refuse(id);
  }
  return answer;
}

Bytes epochOutput(const State& state, unsigned int epoch) {
  if (state.outputType == OutputType::Nmea) {
    const std::string sentences = nmeaSentences(state, epoch);
    return Bytes(sentences.begin(), sentences.end());
  }
  const bool due = state.navMessageInterval != 0 && epoch % state.navMessageInterval == 0;
  return state.outputType == OutputType::Binary && due ? navigationData(state) : Bytes{};
}

}  // namespace

TimingMode State::runningTimingMode() const {
  const bool over = surveyed >= std::chrono::seconds{timing.surveyLength};
  return timing.mode == TimingMode::AutoSurvey && over ? TimingMode::Static : timing.mode;
}

Bytes Receiver::receive(const Bytes& bytes) {
  const std::lock_guard lock(mutex_);
  sinceByte_ = milliseconds{0};
  return answer(reader_.push(bytes));
}

Bytes Receiver::answer(const std::vector<Frame>& frames) {
  Bytes answers;
  for (const Frame& command : frames) {
    append(answers, sim::answer(state_, command));
  }
  talking_ = talking_ || !answers.empty();
  return answers;
}

Bytes Receiver::tick(milliseconds elapsed) {
  const std::lock_guard lock(mutex_);
  Bytes output;
  sinceByte_ += elapsed;
  while (epoch() - sinceEpoch_ <= elapsed) {
    const milliseconds step = std::max(epoch() - sinceEpoch_, milliseconds{0});
    advance(step);
    elapsed -= step;
    sinceEpoch_ = milliseconds{0};
    append(output, epochOutput(state_, ++epochs_));
  }
  advance(elapsed);
  if (reader_.midFrame() && sinceByte_ >= kFrameTimeout) {
    append(output, answer(reader_.abandon()));
    sinceByte_ = milliseconds{0};
  }
  return output;
}

void Receiver::advance(milliseconds elapsed) {
  sinceEpoch_ = talking_ ? sinceEpoch_ + elapsed : milliseconds{0};
  state_.time.timeOfWeek += elapsed;
  while (state_.time.timeOfWeek >= kWeek) {
    state_.time.timeOfWeek -= kWeek;
    ++state_.time.week;
  }
  if (state_.runningTimingMode() == TimingMode::AutoSurvey) {
    const milliseconds length = std::chrono::seconds{state_.timing.surveyLength};
    state_.surveyed = std::min(state_.surveyed + elapsed, length);
  }
}

milliseconds Receiver::epoch() const {
  constexpr milliseconds kSecond{1000};
  return talking_ && state_.updateRate != 0 ? kSecond / state_.updateRate : kNever;
}

milliseconds Receiver::untilNextOutput() const {
  const std::lock_guard lock(mutex_);
  const milliseconds untilEpoch =
      epoch() == kNever ? kNever : std::max(epoch() - sinceEpoch_, milliseconds{0});
  return reader_.midFrame() ? std::min(untilEpoch, kFrameTimeout - sinceByte_) : untilEpoch;
}

State Receiver::state() const {
  const std::lock_guard lock(mutex_);
  return state_;
}

void Receiver::change(const std::function<void(State&)>& edit) {
  const std::lock_guard lock(mutex_);
  edit(state_);
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
