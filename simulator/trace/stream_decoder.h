#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "orb-sim/bytes.h"
#include "orb-sim/frame.h"

namespace orb::sim {

/// Whether the byte can stand in a line of text.
inline bool isText(std::uint8_t byte) { return byte >= 0x20 && byte < 0x7F; }

/// Something that was found in a stream of bytes.
struct StreamItem {
  enum class Kind : std::uint8_t {
    Packet,    ///< a whole packet with the right checksum
    Damaged,   ///< the start of a packet that is none, with what follows up to its claimed end
    Sentence,  ///< an NMEA sentence, from $ to its line's end
    Other,     ///< anything else
  };

  Kind kind = Kind::Other;
  std::uint64_t offset = 0;       ///< where it begins in the stream
  Bytes bytes;                    ///< of Other, the first kShownBytes
  std::size_t length = 0;         ///< how many there were
  std::string_view trouble = {};  ///< what is wrong with a packet or sentence; empty for nothing

  static constexpr std::size_t kShownBytes = 128;

  bool operator==(const StreamItem&) const = default;
};

/// Cuts any stream of bytes into packets, sentences and what is neither, so that each byte is in
/// one item and the items come in order. Packets are found by the rules of FrameReader: a damaged
/// one costs its first byte only, and a good one inside it is found. Keeps less than a packet.
class StreamDecoder {
 public:
  using Sink = std::function<void(const StreamItem&)>;

  /// Longer text without a line's end is not taken for a sentence.
  static constexpr std::size_t kLongestSentence = 256;

  /// `sink` is handed each item when it is complete.
  explicit StreamDecoder(Sink sink) : sink_(std::move(sink)) {}

  /// Takes the next bytes, cut anywhere.
  void push(const Bytes& bytes);

  /// Says that nothing more will come, for long: what is incomplete is handed on as what it is.
  void finish();

  /// Whether something is incomplete.
  bool isMidItem() const { return !pending_.empty() || rest_.length > 0; }

 private:
  struct Verdict {
    enum class Kind : std::uint8_t { Nothing, Incomplete, Whole, Damaged };
    Kind kind = Kind::Nothing;
    std::size_t length = 0;
    std::string_view trouble = {};
  };

  Verdict judge(std::size_t position) const;
  Verdict judgePacket(std::size_t position) const;
  Verdict judgeSentence(std::size_t position) const;

  void scan(bool isEnd);
  void hand(std::size_t position, const Verdict& verdict);
  void skip(std::size_t position, const Verdict& verdict);
  bool endsRest(std::uint64_t offset) const;
  void handRest();

  Sink sink_;
  Bytes pending_;
  std::uint64_t pendingOffset_ = 0;

  StreamItem rest_;            ///< skipped bytes that belong together so far
  std::uint64_t restEnd_ = 0;  ///< for a damaged packet, its claimed end
  bool restIsText_ = false;
};

}  // namespace orb::sim
