#include <algorithm>
#include <optional>
#include <utility>

#include "faults/outbox.h"
#include "faults/pacer.h"
#include "model/draw.h"
#include "orb-sim/frame.h"
#include "orb-sim/line_conditions.h"

namespace orb::sim {

using std::chrono::milliseconds;

class LineShaper::Implementation {
 public:
  Implementation(Device& device, LineConditions conditions, std::uint64_t seed)
      : device_(device),
        conditions_(std::move(conditions)),
        seed_(seed),
        fromClient_(conditions_.baud),
        toClient_(conditions_.baud),
        speed_(conditions_.checksSpeed ? device.speed() : 0),
        nextSpeed_(speed_),
        nextChatter_(chatters() ? conditions_.chatterInterval : kNever) {
    pace();
  }

  Bytes receive(const Bytes& bytes) {
    if (hangUp_) {
      return {};
    }
    fromClient_.add(onTheLine(bytes));
    arrive(fromClient_.take(milliseconds{0}));
    hear();
    return takeOutput();
  }

  Bytes tick(milliseconds elapsed) {
    constexpr milliseconds kShortestStep{1};
    Bytes output;
    do {
      const milliseconds step = std::min(elapsed, std::max(untilNextOutput(), kShortestStep));
      append(output, letPass(step));
      elapsed -= step;
    } while (elapsed > milliseconds{0});
    return output;
  }

  milliseconds untilNextOutput() const {
    const auto until = [&](milliseconds time) { return time == kNever ? kNever : time - now_; };
    return std::min({fromClient_.untilNext(), toClient_.untilNext(), until(heardLater_.next()),
                     until(nextChatter_), device_.untilNextOutput()});
  }

  bool takeHangUp() { return std::exchange(hangUp_, false); }

  unsigned int speed() const { return speed_; }

  void setClientSpeed(unsigned int baud) {
    if (conditions_.checksSpeed) {
      clientSpeed_ = baud;
    }
  }

  bool takesMore() const {
    return fromClient_.waiting() + toClient_.waiting() <= kLongestBacklog &&
           !heardLater_.isFull() && device_.takesMore();
  }

 private:
  // More than this does not wait for its turn on the line; a receiver has no endless memory either.
  static constexpr std::size_t kLongestBacklog = 4096;

  bool chatters() const { return conditions_.chatterInterval > milliseconds{0}; }

  Bytes letPass(milliseconds elapsed) {
    const bool lineIsDown = hangUp_;
    now_ += elapsed;
    Bytes output = lineIsDown ? Bytes{} : leave(toClient_.take(elapsed));
    const Bytes unasked = device_.tick(elapsed);
    if (toClient_.waiting() <= kLongestBacklog) {
      toClient_.add(unasked);
    }
    askForHangUp();
    followSpeed();
    chatter();
    arrive(fromClient_.take(elapsed));
    hear();
    if (!lineIsDown) {
      append(output, takeOutput());
    }
    return output;
  }

  void arrive(const Bytes& bytes) {
    Bytes message;
    for (const std::uint8_t byte : bytes) {
      message.push_back(byte);
      if (!reader_.push({byte}).empty()) {
        delay(std::exchange(message, {}));
        ++messages_;
      }
    }
    delay(std::move(message));
  }

  /// A message whose latency comes out shorter than that of the one before it does not overtake it.
  void delay(Bytes bytes) {
    constexpr std::uint64_t kStream = ~std::uint64_t{0};  // apart from those of fault rules
    Draw draw(seed_, kStream, messages_);
    const auto choices = static_cast<std::uint64_t>(conditions_.spread.count()) + 1;
    const milliseconds drawn{draw.below(choices)};
    lastDue_ = std::max(lastDue_, now_ + conditions_.latency + drawn);
    heardLater_.add(lastDue_, {std::move(bytes)});
  }

  void hear() {
    const Bytes heard = heardLater_.take(now_);
    if (!heard.empty()) {
      toClient_.add(device_.receive(heard));
      askForHangUp();
      followSpeed();
    }
  }

  void chatter() {
    if (now_ < nextChatter_) {
      return;
    }
    nextChatter_ = now_ + conditions_.chatterInterval;
    if (toClient_.waiting() == 0) {
      toClient_.add(Bytes(conditions_.chatter.begin(), conditions_.chatter.end()));
    }
  }

  void askForHangUp() {
    if (device_.takeHangUp()) {
      hangUp_ = true;
      fromClient_.clear();
      heardLater_ = {};
      reader_ = {};
    }
  }

  /// What is still on its way to the client when the line is dropped is lost.
  Bytes takeOutput() {
    Bytes output = leave(toClient_.take(milliseconds{0}));
    if (hangUp_) {
      toClient_.clear();
      changeSpeed();
    }
    return output;
  }

  /// Where the device has changed its speed, what it has said until now leaves at the old one.
  void followSpeed() {
    const unsigned int speed = conditions_.checksSpeed ? device_.speed() : 0;
    if (speed != nextSpeed_) {
      nextSpeed_ = speed;
      leaveBefore_ = toClient_.waiting();
      if (leaveBefore_ == 0) {
        changeSpeed();
      }
    }
  }

  void changeSpeed() {
    speed_ = nextSpeed_;
    leaveBefore_ = 0;
    pace();
  }

  void pace() {
    if (speed_ != 0 && conditions_.baud != 0) {
      fromClient_.setBaud(speed_);
      toClient_.setBaud(speed_);
    }
  }

  Bytes leave(Bytes bytes) {
    Bytes left;
    if (leaveBefore_ != 0) {
      left = onTheLine(takeFirst(bytes, std::min(bytes.size(), leaveBefore_)));
      leaveBefore_ -= left.size();
      if (leaveBefore_ == 0) {
        changeSpeed();
      }
    }
    append(left, onTheLine(std::move(bytes)));
    return left;
  }

  /// What the far end makes of bytes: none stays what it was where the speeds differ.
  Bytes onTheLine(Bytes bytes) {
    constexpr std::uint64_t kStream = ~std::uint64_t{1};  // apart from the others
    if (speed_ != 0 && clientSpeed_ && *clientSpeed_ != speed_) {
      for (std::uint8_t& byte : bytes) {
        Draw draw(seed_, kStream, garbled_++);
        byte = static_cast<std::uint8_t>(byte ^ (1 + draw.below(0xFF)));
      }
    }
    return bytes;
  }

  Device& device_;
  const LineConditions conditions_;
  const std::uint64_t seed_;
  milliseconds now_{0};

  Pacer fromClient_;
  FrameReader reader_;          ///< tells where the messages that arrive end
  std::uint64_t messages_ = 0;  ///< that have arrived
  milliseconds lastDue_{0};
  Outbox heardLater_;

  Pacer toClient_;
  unsigned int speed_;           ///< of the device; 0: any will do
  unsigned int nextSpeed_;       ///< another, where the device has changed it
  std::size_t leaveBefore_ = 0;  ///< so many bytes still leave at the old one
  std::optional<unsigned int> clientSpeed_;
  std::uint64_t garbled_ = 0;
  milliseconds nextChatter_;
  bool hangUp_ = false;  ///< the line has not been told yet, and carries nothing until then
};

LineShaper::LineShaper(Device& device, const LineConditions& conditions, std::uint64_t seed)
    : implementation_(std::make_unique<Implementation>(device, conditions, seed)) {}

LineShaper::~LineShaper() = default;

Bytes LineShaper::receive(const Bytes& bytes) { return implementation_->receive(bytes); }

Bytes LineShaper::tick(milliseconds elapsed) { return implementation_->tick(elapsed); }

milliseconds LineShaper::untilNextOutput() const { return implementation_->untilNextOutput(); }

bool LineShaper::takeHangUp() { return implementation_->takeHangUp(); }

bool LineShaper::takesMore() const { return implementation_->takesMore(); }

unsigned int LineShaper::speed() const { return implementation_->speed(); }

void LineShaper::setClientSpeed(unsigned int baud) { implementation_->setClientSpeed(baud); }

}  // namespace orb::sim
