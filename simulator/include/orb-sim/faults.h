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

/// What goes wrong with the answer to one message of the client's.
///
/// The frames of the answer that FaultRule::target names are not sent, come late or come damaged:
enum class FaultKind : std::uint8_t {
  NoReply,         ///< the frame is not sent
  LateReply,       ///< it comes `delay` later; what follows it in the answer does not wait for it
  Refusal,         ///< the negative acknowledgement comes instead of the whole answer, and the
                   ///< receiver does not do what it was told
  WrongId,         ///< another message's id, with a checksum that fits: the power mode's (0xB9), or
                   ///< the update rate's (0x86) in the power mode's place; with a sub-id, the
                   ///< navigation mode's (0x64 0x8B), or the second band's (0x64 0x9F) in its place
  BadChecksum,     ///< the checksum is inverted
  CutShort,        ///< only the first `length` bytes come
  OverlongLength,  ///< the length field claims `length` bytes more than there are, at most 65535
  Doubled,         ///< the frame comes twice
  Pieces,       ///< it comes in pieces of `length` bytes, `delay` apart; whatever else the device
                ///< has to say waits until the last one is out
  NoiseBefore,  ///< `length` random bytes come before it
  NoiseInside,  ///< `length` random bytes stand in its middle
  NmeaBurst,    ///< `length` NMEA sentences come before it

  // These are about the receiver or the line; `target` does not matter to them.

  WrongValue,   ///< a setting is acknowledged, and another value than the one sent is kept: one bit
                ///< is turned over, in a byte before the last, which is most settings' attribute
                ///< byte. Falls on settings only, and counts only them.
  Silence,      ///< the message is heard, and then nothing goes through either way, for ever
  HangUp,       ///< the message is heard, the line is dropped, and no answer comes; clients have to
                ///< open it anew. What they have written after the message is lost.
  SlowRestart,  ///< the answer comes, and from then on nothing goes through either way for `delay`
};

/// The frames of an answer that a fault falls on. A setting is answered with an acknowledgement
/// alone, which then counts as the reply; a refusal counts as an acknowledgement.
enum class FaultTarget : std::uint8_t { Reply, Acknowledgement, Both };

/// When which fault occurs.
struct FaultRule {
  /// As `times`: without limit.
  static constexpr std::size_t kUnlimited = static_cast<std::size_t>(-1);

  FaultKind kind = FaultKind::NoReply;      ///< what goes wrong
  FaultTarget target = FaultTarget::Reply;  ///< with which frames
  std::optional<std::uint16_t> message{};   ///< the client's message; none: every message
  std::size_t first = 1;                    ///< the first occurrence that counts, from 1
  std::size_t every = 1;                    ///< from there on, each so-many-th
  std::size_t times = kUnlimited;           ///< and at most so often
  double chance = 1;                        ///< 0 to 1
  std::chrono::milliseconds delay{0};       ///< as the kind uses it
  std::size_t length = 0;                   ///< bytes or sentences, as the kind uses it
};

/// A device between a receiver and its line that spoils its answers by rules.
///
/// Several rules may fall on one message; they are applied in their order, each on what the ones
/// before it have left. Chance and noise are drawn from the seed, the rule and the count of its
/// occurrences alone: the same bytes from the client meet the same faults, however they are cut and
/// timed. A rule counts a message, and may fall on it, also while the receiver does not hear it.
///
/// Only packets reach the receiver, not what stands between them. What the receiver says of
/// its own accord passes unchanged.
class FaultyDevice : public Device {
 public:
  /// A rule has fallen on a message.
  struct Event {
    std::size_t rule;       ///< index into the rules
    std::uint16_t message;  ///< the client's message
  };

  /// `device` must outlive this. Throws std::invalid_argument for a rule without meaning: a
  /// `first` or `every` of 0, a chance outside 0 to 1, a negative delay, pieces of no byte.
  FaultyDevice(Device& device, std::vector<FaultRule> rules, std::uint64_t seed);
  ~FaultyDevice() override;

  Bytes receive(const Bytes& bytes) override;
  Bytes tick(std::chrono::milliseconds elapsed) override;
  std::chrono::milliseconds untilNextOutput() const override;
  bool takeHangUp() override;
  bool takesMore() const override;
  unsigned int speed() const override;

  /// So many of what has happened are kept.
  static constexpr std::size_t kMostEvents = 10'000;

  /// The last kMostEvents of what has happened so far. May be called from any thread.
  std::vector<Event> events() const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace orb::sim
