#include "orb-sim/script.h"

#include <algorithm>
#include <utility>

namespace orb::sim {

using std::chrono::milliseconds;

Script::Rule Script::on(std::uint16_t id) {
  return Rule(*this, [id](const Frame& frame) { return frame.id() == id; });
}

Script::Rule Script::on(const Bytes& packet) {
  return Rule(*this, [packet](const Frame& frame) { return frame.packet() == packet; });
}

Script::Rule Script::onAny() {
  return Rule(*this, [](const Frame&) { return true; });
}

void Script::clear() {
  const std::lock_guard lock(mutex_);
  rules_.clear();
}

void Script::add(Definition definition) {
  const std::lock_guard lock(mutex_);
  rules_.push_back(std::move(definition));
}

Bytes Script::receive(const Bytes& bytes) {
  const std::lock_guard lock(mutex_);
  Bytes answers;
  for (const Frame& packet : reader_.push(bytes)) {
    const Definition* rule = ruleFor(packet);
    append(answers, rule == nullptr ? passOn(packet) : perform(*rule, packet));
  }
  return answers;
}

// Every rule counts the packets that match it, also while a newer rule decides.
Script::Definition* Script::ruleFor(const Frame& packet) {
  Definition* newest = nullptr;
  for (Definition& rule : rules_) {
    if (!rule.matches(packet)) {
      continue;
    }
    ++rule.occurrences;
    if (rule.occurrences >= rule.first && rule.occurrences <= rule.last) {
      newest = &rule;
    }
  }
  return newest;
}

Bytes Script::perform(const Definition& rule, const Frame& packet) {
  Bytes answer = rule.answer ? rule.answer(packet) : passOn(packet);
  if (rule.delay == milliseconds{0} && rule.pieceLength == 0) {
    return answer;
  }
  schedule(rule, std::move(answer));
  return takeDue();
}

Bytes Script::passOn(const Frame& packet) {
  return device_ == nullptr ? Bytes{} : device_->receive(packet.packet());
}

void Script::schedule(const Definition& rule, Bytes answer) {
  const std::size_t length = rule.pieceLength == 0 ? answer.size() : rule.pieceLength;
  milliseconds due = now_ + rule.delay;
  while (!answer.empty()) {
    scheduled_.emplace(due, takeFirst(answer, length));
    due += rule.gap;
  }
}

Bytes Script::takeDue() {
  Bytes due;
  const auto end = scheduled_.upper_bound(now_);
  for (auto piece = scheduled_.begin(); piece != end; ++piece) {
    append(due, piece->second);
  }
  scheduled_.erase(scheduled_.begin(), end);
  return due;
}

Bytes Script::tick(milliseconds elapsed) {
  const std::lock_guard lock(mutex_);
  now_ += elapsed;
  Bytes output = takeDue();
  if (device_ != nullptr) {
    append(output, device_->tick(elapsed));
  }
  return output;
}

milliseconds Script::untilNextOutput() const {
  const std::lock_guard lock(mutex_);
  const milliseconds next = device_ == nullptr ? kNever : device_->untilNextOutput();
  return scheduled_.empty() ? next : std::min(next, scheduled_.begin()->first - now_);
}

Script::Rule::Rule(Script& script, std::function<bool(const Frame&)> matches) : script_(script) {
  definition_.matches = std::move(matches);
}

Script::Rule::~Rule() { script_.add(std::move(definition_)); }

Script::Rule& Script::Rule::nth(std::size_t n) {
  definition_.first = n;
  definition_.last = n;
  return *this;
}

Script::Rule& Script::Rule::first(std::size_t n) {
  definition_.first = 1;
  definition_.last = n;
  return *this;
}

Script::Rule& Script::Rule::answer(const Bytes& bytes) {
  return answer([bytes](const Frame&) { return bytes; });
}

Script::Rule& Script::Rule::answer(std::function<Bytes(const Frame&)> answer) {
  definition_.answer = std::move(answer);
  return *this;
}

Script::Rule& Script::Rule::nothing() { return answer(Bytes{}); }

Script::Rule& Script::Rule::refusal() {
  return answer([](const Frame& packet) { return refuse(packet.id()); });
}

Script::Rule& Script::Rule::after(milliseconds delay) {
  definition_.delay = delay;
  return *this;
}

Script::Rule& Script::Rule::inPieces(std::size_t length, milliseconds gap) {
  definition_.pieceLength = length;
  definition_.gap = gap;
  return *this;
}

}  // namespace orb::sim
