#include "orb-sim/replay.h"

#include <algorithm>
#include <utility>

namespace orb::sim {

using std::chrono::floor;
using std::chrono::microseconds;
using std::chrono::milliseconds;

ReplayDevice::ReplayDevice(const std::vector<TraceRecord>& trace, Pace pace,
                           AnswerUnknown answerUnknown)
    : pace_(pace), answerUnknown_(std::move(answerUnknown)) {
  Answer beforeAll;
  Answer* current = &beforeAll;
  microseconds asked{0};
  FrameReader reader;
  for (const TraceRecord& record : trace) {
    if (record.from == Speaker::Receiver) {
      current->push_back({floor<milliseconds>(record.at - asked), record.bytes});
      continue;
    }
    for (const Frame& packet : reader.push(record.bytes)) {
      current = &answers_[packet.payload].recorded.emplace_back();
      asked = record.at;
    }
  }
  due_.assign(beforeAll.begin(), beforeAll.end());
}

Bytes ReplayDevice::receive(const Bytes& bytes) {
  const std::lock_guard lock(mutex_);
  Bytes output;
  for (const Frame& packet : reader_.push(bytes)) {
    append(output, takeLeftovers());
    append(output, answerTo(packet));
  }
  return output;
}

/// What has to be said before the next answer.
Bytes ReplayDevice::takeLeftovers() {
  Bytes output;
  for (const Piece& piece : due_) {
    if (piece.at < answerEnd_) {
      append(output, piece.bytes);
    }
  }
  due_.clear();
  return output;
}

Bytes ReplayDevice::answerTo(const Frame& packet) {
  const auto found = answers_.find(packet.payload);
  if (found == answers_.end()) {
    return answerUnknown_(packet);
  }
  Answers& answers = found->second;
  schedule(answers.recorded[answers.next]);
  answers.next = (answers.next + 1) % answers.recorded.size();
  return takeDue();
}

void ReplayDevice::schedule(const Answer& answer) {
  answerEnd_ = now_ + kAnswerTime;
  for (const Piece& piece : answer) {
    const bool isAtOnce = pace_ == Pace::Fast && piece.at < kAnswerTime;
    due_.push_back({now_ + (isAtOnce ? milliseconds{0} : piece.at), piece.bytes});
  }
}

Bytes ReplayDevice::takeDue() {
  Bytes output;
  while (!due_.empty() && due_.front().at <= now_) {
    append(output, due_.front().bytes);
    due_.pop_front();
  }
  return output;
}

Bytes ReplayDevice::tick(milliseconds elapsed) {
  const std::lock_guard lock(mutex_);
  now_ += elapsed;
  return takeDue();
}

milliseconds ReplayDevice::untilNextOutput() const {
  const std::lock_guard lock(mutex_);
  return due_.empty() ? kNever : std::max(due_.front().at - now_, milliseconds{0});
}

}  // namespace orb::sim
