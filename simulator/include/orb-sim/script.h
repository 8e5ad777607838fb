#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

#include "orb-sim/bytes.h"
#include "orb-sim/device.h"
#include "orb-sim/frame.h"

namespace orb::sim {

/// A device that stands in front of another one and answers some packets its own way.
///
///     Receiver receiver;
///     Script script(receiver);
///     script.on(0x1000).nothing();                        // never answers the update rate query
///     script.on(0x0200).nth(1).after(50ms);               // the receiver's answer, 50 ms late
///     script.on(0x2F00).answer(noise).inPieces(3, 10ms);  // these bytes instead, cut up
///
/// The newest rule that applies to a packet decides. A packet that no rule applies to goes to the
/// device. Bytes that belong to no good packet go nowhere.
class Script : public Device {
 private:
  struct Definition;

 public:
  class Rule;

  /// Without a device, what no rule answers is met with silence.
  Script() = default;
  /// In front of `device`, which must outlive this.
  explicit Script(Device& device) : device_(&device) {}

  /// A rule for a message. It comes into force as a whole when the Rule is destroyed: at the end of
  /// the statement.
  Rule on(std::uint16_t id);
  /// A rule for one exact packet.
  Rule on(const Bytes& packet);
  /// A rule for every packet.
  Rule onAny();

  /// Forgets all rules. What is already on its way still arrives.
  void clear();

  Bytes receive(const Bytes& bytes) override;
  Bytes tick(std::chrono::milliseconds elapsed) override;
  std::chrono::milliseconds untilNextOutput() const override;

 private:
  using Milliseconds = std::chrono::milliseconds;

  struct Definition {
    std::function<bool(const Frame&)> matches;
    std::size_t first = 1;  ///< occurrences that the rule applies to, counted from 1
    std::size_t last = static_cast<std::size_t>(-1);
    std::function<Bytes(const Frame&)> answer;  ///< null: what the device says
    Milliseconds delay{0};
    std::size_t pieceLength = 0;  ///< 0: whole
    Milliseconds gap{0};
    std::size_t occurrences = 0;
  };

  void add(Definition definition);
  Definition* ruleFor(const Frame& packet);
  Bytes perform(const Definition& rule, const Frame& packet);
  Bytes passOn(const Frame& packet);
  void schedule(const Definition& rule, Bytes answer);
  Bytes takeDue();

  mutable std::mutex mutex_;
  Device* device_ = nullptr;
  FrameReader reader_;
  std::vector<Definition> rules_;
  Milliseconds now_{0};
  std::multimap<Milliseconds, Bytes> scheduled_;  ///< by the time at which they are due
};

/// One rule in the making. Without answer(), nothing() or refusal(), the device sees the
/// packet, and its answer is what the rule delays or cuts; with one of them, it never sees
/// the packet. Functions that a rule is given must not call the script. One thread uses a rule.
class Script::Rule {
 public:
  Rule(const Rule&) = delete;
  Rule& operator=(const Rule&) = delete;
  ~Rule();

  /// Applies to the n-th matching packet only, counted from 1 from when the rule came into force.
  Rule& nth(std::size_t n);
  /// Applies to the first n matching packets only.
  Rule& first(std::size_t n);

  /// Answers these bytes, whatever they are.
  Rule& answer(const Bytes& bytes);
  /// Answers what `answer` makes of the packet.
  Rule& answer(std::function<Bytes(const Frame&)> answer);
  /// Answers nothing.
  Rule& nothing();
  /// Answers with the negative acknowledgement.
  Rule& refusal();

  /// Sends the answer that much later.
  Rule& after(std::chrono::milliseconds delay);
  /// Cuts the answer into pieces of `length` bytes, 1 or more, the first at once and `gap` between
  /// two. Pieces without a gap reach the client as one.
  Rule& inPieces(std::size_t length, std::chrono::milliseconds gap);

 private:
  friend class Script;
  Rule(Script& script, std::function<bool(const Frame&)> matches);

  Script& script_;
  Definition definition_;
};

}  // namespace orb::sim
