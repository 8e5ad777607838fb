#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "orb-sim/bytes.h"
#include "orb-sim/device.h"

namespace orb::sim {

/// What goes wrong with one answer of the receiver.
enum class FaultKind : std::uint8_t {
  NoReply,         ///< the frame is not sent
  LateReply,       ///< it comes `delay` later
  Refusal,         ///< the negative acknowledgement comes instead of the whole answer
  WrongId,         ///< another message's id, with a checksum that fits
  BadChecksum,     ///< the checksum is wrong
  CutShort,        ///< only the first `length` bytes come
  OverlongLength,  ///< the length field claims `length` bytes more than there are
  Doubled,         ///< the frame comes twice
  Pieces,          ///< it comes in pieces of `length` bytes, `delay` apart
  NoiseBefore,     ///< `length` random bytes come in front of it
  NoiseInside,     ///< `length` random bytes stand in its middle
  NmeaBurst,       ///< `length` NMEA sentences come in front of it
  WrongValue,      ///< a setting is acknowledged, and another value than the one sent is kept
  Silence,         ///< from now on the line is silent
  HangUp,          ///< the line is dropped; clients have to open it anew
  SlowRestart,     ///< the receiver hears and says nothing for `delay`
};

/// The frames of an answer that a fault falls on. A setting is answered with an acknowledgement
/// alone, which then counts as the reply.
enum class FaultTarget : std::uint8_t { Reply, Acknowledgement, Both };

/// When which fault occurs.
struct FaultRule {
  static constexpr std::size_t kUnlimited = static_cast<std::size_t>(-1);

  FaultKind kind = FaultKind::NoReply;
  FaultTarget target = FaultTarget::Reply;
  std::optional<std::uint16_t> message;  ///< the client's message; none: every message
  std::size_t first = 1;                 ///< the first occurrence that counts, from 1
  std::size_t every = 1;                 ///< from there on, each so-many-th
  std::size_t times = kUnlimited;        ///< and at most so often
  double chance = 1;                     ///< 0 to 1
  std::chrono::milliseconds delay{0};
  std::size_t length = 0;
};

/// A device that stands in front of a receiver and spoils its answers by rules.
///
/// Several rules may fall on one answer; they are applied in their order. Chance and noise are
/// drawn from the seed, the rule and the count of its occurrences alone: the same bytes from the
/// client meet the same faults, however they are cut and timed.
class FaultyDevice : public Device {
 public:
  /// A fault that has happened.
  struct Event {
    std::size_t rule;       ///< index into the rules
    std::uint16_t message;  ///< the client's message
  };

  /// `behind` must outlive this.
  FaultyDevice(Device& behind, std::vector<FaultRule> rules, std::uint64_t seed);
  ~FaultyDevice() override;

  Bytes receive(const Bytes& bytes) override;
  Bytes tick(std::chrono::milliseconds elapsed) override;
  std::chrono::milliseconds untilNextOutput() const override;
  bool takeHangUp() override;

  std::vector<Event> events() const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace orb::sim
