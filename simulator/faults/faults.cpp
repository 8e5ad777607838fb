#include <algorithm>
#include <deque>
#include <mutex>
#include <utility>

#include "faults/answer.h"
#include "faults/outbox.h"
#include "faults/rule_book.h"
#include "orb-sim/faults.h"
#include "orb-sim/frame.h"
#include "orb-sim/receiver.h"

namespace orb::sim {

using std::chrono::milliseconds;

namespace {

/// Turns one bit over in a message's body, but not in its last byte where there are more: most
/// settings end with their attribute byte. A message without a body stays as it is.
void turnOneBit(Frame& message, Draw& draw) {
  const std::size_t bodyLength = message.body().size();
  if (bodyLength == 0) {
    return;
  }
  const std::size_t begin = message.payload.size() - bodyLength;
  const std::size_t choices = std::max<std::size_t>(bodyLength - 1, 1);
  std::uint8_t& byte = message.payload[begin + draw.below(choices)];
  byte = static_cast<std::uint8_t>(byte ^ 1U << draw.below(8));
}

}  // namespace

class FaultyDevice::Implementation {
 public:
  Implementation(Device& device, std::vector<FaultRule> rules, std::uint64_t seed)
      : device_(device), rules_(std::move(rules), seed) {}

  Bytes receive(const Bytes& bytes) {
    const std::lock_guard lock(mutex_);
    if (hangUp_) {
      return {};
    }
    lastByteAt_ = now_;
    answer(reader_.push(bytes));
    return outbox_.take(now_);
  }

  // Time passes from one event to the next, so that the order of what is said does not depend on
  // how often the line calls.
  Bytes tick(milliseconds elapsed) {
    const std::lock_guard lock(mutex_);
    Bytes output;
    const milliseconds end = now_ + elapsed;
    do {
      const bool lineIsDown = hangUp_;
      letPass(std::min(end, nextEvent()) - now_);
      if (!lineIsDown) {
        append(output, outbox_.take(now_));
      }
    } while (now_ < end);
    return output;
  }

  milliseconds untilNextOutput() const {
    const std::lock_guard lock(mutex_);
    if (outbox_.next() <= now_) {
      return milliseconds{0};
    }
    const milliseconds next = nextEvent();
    return std::min(device_.untilNextOutput(), next == kNever ? kNever : next - now_);
  }

  bool takeHangUp() {
    const std::lock_guard lock(mutex_);
    const bool fromDevice = device_.takeHangUp();
    return std::exchange(hangUp_, false) || fromDevice;
  }

  bool takesMore() const {
    const std::lock_guard lock(mutex_);
    return !outbox_.isFull() && device_.takesMore();
  }

  unsigned int speed() const { return device_.speed(); }

  std::vector<Event> events() const {
    const std::lock_guard lock(mutex_);
    return {events_.begin(), events_.end()};
  }

 private:
  using Hits = std::vector<RuleBook::Hit>;

  void answer(const std::vector<Frame>& packets) {
    for (const Frame& packet : packets) {
      answer(packet);
      if (hangUp_) {
        reader_ = {};
        return;
      }
    }
  }

  void answer(const Frame& packet) {
    Hits hits = rules_.hitsOn(packet);
    Answer answer = isDeaf() ? Answer{} : answerOfReceiver(packet, hits);
    for (RuleBook::Hit& hit : hits) {
      events_.push_back({hit.index, packet.id()});
      if (events_.size() > kMostEvents) {
        events_.pop_front();
      }
      carryOut(hit, answer);
    }
    for (AnswerPart& part : answer) {
      outbox_.add(now_ + part.delay, {std::move(part.bytes), part.pieceLength, part.gap});
    }
  }

  /// Carries out what befalls the receiver; what befalls its answer and the line is left.
  Answer answerOfReceiver(Frame packet, Hits& hits) {
    const auto isRefusal = [](const RuleBook::Hit& hit) {
      return hit.rule.kind == FaultKind::Refusal;
    };
    if (std::any_of(hits.begin(), hits.end(), isRefusal)) {
      return splitAnswer(refuse(packet.id()));
    }
    for (RuleBook::Hit& hit : hits) {
      if (hit.rule.kind == FaultKind::WrongValue) {
        turnOneBit(packet, hit.draw);
      } else if (hit.rule.kind == FaultKind::SlowRestart) {
        deafUntil_ = std::max(deafUntil_, now_ + hit.rule.delay);
      }
    }
    return splitAnswer(device_.receive(packet.packet()));
  }

  void carryOut(RuleBook::Hit& hit, Answer& answer) {
    switch (hit.rule.kind) {
      case FaultKind::Silence:
        answer.clear();
        deafUntil_ = kNever;
        break;
      case FaultKind::HangUp:
        answer.clear();
        hangUp_ = true;
        break;
      default:
        spoil(answer, hit.rule, hit.draw);
        break;
    }
  }

  void letPass(milliseconds elapsed) {
    Bytes output = device_.tick(elapsed);
    if (!isDeaf()) {
      outbox_.add(now_ + elapsed, {std::move(output)});
    }
    now_ += elapsed;
    if (reader_.midFrame() && now_ - lastByteAt_ >= Receiver::kFrameTimeout) {
      lastByteAt_ = now_;
      answer(reader_.abandon());
    }
  }

  /// The next time after now at which something changes here; kNever when only the client or the
  /// receiver can change anything.
  milliseconds nextEvent() const {
    milliseconds next = kNever;
    const auto consider = [&](milliseconds time) {
      if (time > now_) {
        next = std::min(next, time);
      }
    };
    consider(outbox_.next());
    consider(deafUntil_);
    if (reader_.midFrame()) {
      consider(lastByteAt_ + Receiver::kFrameTimeout);
    }
    return next;
  }

  bool isDeaf() const { return now_ < deafUntil_; }

  mutable std::mutex mutex_;
  Device& device_;
  RuleBook rules_;
  std::deque<Event> events_;
  FrameReader reader_;
  Outbox outbox_;
  milliseconds now_{0};
  milliseconds lastByteAt_{0};
  milliseconds deafUntil_{0};  ///< until then, nothing goes through either way
  bool hangUp_ = false;        ///< the line has not been told yet, and carries nothing until then
};

FaultyDevice::FaultyDevice(Device& device, std::vector<FaultRule> rules, std::uint64_t seed)
    : implementation_(std::make_unique<Implementation>(device, std::move(rules), seed)) {}

FaultyDevice::~FaultyDevice() = default;

Bytes FaultyDevice::receive(const Bytes& bytes) { return implementation_->receive(bytes); }

Bytes FaultyDevice::tick(milliseconds elapsed) { return implementation_->tick(elapsed); }

milliseconds FaultyDevice::untilNextOutput() const { return implementation_->untilNextOutput(); }

bool FaultyDevice::takeHangUp() { return implementation_->takeHangUp(); }

bool FaultyDevice::takesMore() const { return implementation_->takesMore(); }

unsigned int FaultyDevice::speed() const { return implementation_->speed(); }

std::vector<FaultyDevice::Event> FaultyDevice::events() const { return implementation_->events(); }

}  // namespace orb::sim
