// A whole wait for a reply: bytes that come in any pieces, with seconds and empty reads between
// them. Input: the awaited message, the time-out, then pieces: a byte of length and a bit for a
// second that passes, and the bytes.

#include <algorithm>
#include <memory>
#include <optional>

#include "orb-gnss/serial_channel.h"
#include "reference/assembler_model.h"
#include "support/check.h"
#include "support/input.h"
#include "support/scripted_device.h"

namespace orb::test {
namespace {

using Script = std::vector<ScriptedDevice::Piece>;

constexpr std::size_t kCapacityPerSecond = 1024;
constexpr std::size_t kLongestRead = 1024;
constexpr std::size_t kKeptOfAFullBuffer = 268;

Script scriptOf(Input& input) {
  constexpr unsigned int kSecondPasses = 0x80;
  constexpr unsigned int kLongPiece = 0x7F;
  constexpr std::size_t kLongPieceLength = 1500;
  Script script;
  while (!input.isEmpty()) {
    const unsigned int head = input.byte();
    const unsigned int length = head & kLongPiece;
    script.push_back({input.bytes(length == kLongPiece ? kLongPieceLength : length),
                      (head & kSecondPasses) != 0 ? 1 : 0});
  }
  return script;
}

/// The wait as it should go.
class WaitModel {
 public:
  WaitModel(ORBMessageMsgValue awaited, int timeout)
      : awaited_(awaited),
        timeout_(timeout),
        capacity_(kCapacityPerSecond * static_cast<std::size_t>(std::max(timeout, 1))) {}

  /// Whether the wait is over when the script has been read, and what came of it.
  bool isOver() const { return isOver_; }
  const std::optional<Bytes>& match() const { return match_; }

  void read(ScriptedDevice::Piece piece) {
    seconds_ += piece.secondsBefore;
    while (!isOver_ && !piece.bytes.empty()) {
      if (buffer_.size() == capacity_) {
        buffer_.erase(buffer_.begin(), buffer_.end() - kKeptOfAFullBuffer);
      }
      const std::size_t count =
          std::min({piece.bytes.size(), capacity_ - buffer_.size(), kLongestRead});
      const auto end = piece.bytes.begin() + static_cast<std::ptrdiff_t>(count);
      buffer_.insert(buffer_.end(), piece.bytes.begin(), end);
      piece.bytes.erase(piece.bytes.begin(), end);
      look();
    }
  }

 private:
  void look() {
    const Scan scan(buffer_);
    errored_ += scan.errored;
    for (const FoundMessage& message : scan.messages) {
      if (message.type == awaited_) {
        match_ = message.packet;
      }
    }
    isOver_ = (match_ && errored_ == 0) || seconds_ >= timeout_;
  }

  ORBMessageMsgValue awaited_;
  int timeout_;
  std::size_t capacity_;
  Bytes buffer_;
  unsigned int errored_ = 0;
  int seconds_ = 0;
  bool isOver_ = false;
  std::optional<Bytes> match_;
};

std::optional<Bytes> expected(ORBMessageMsgValue awaited, int timeout, const Script& script) {
  WaitModel model(awaited, timeout);
  for (const ScriptedDevice::Piece& piece : script) {
    model.read(piece);
  }
  while (!model.isOver()) {
    model.read({{0}, ScriptedLine::kSecondsAfterTheScript});
  }
  return model.match();
}

}  // namespace

void tryInput(Input input) {
  const ORBMessageMsgValue awaited = input.word();
  const int timeout = input.byte() % 6;
  const Script script = scriptOf(input);

  ScriptedDevice line(script);
  orbIO channel;
  check(channel.isOpen(), "the channel is open");
  const std::unique_ptr<ORBMessage> message(channel.ReceiveMessage(awaited, timeout));

  const std::optional<Bytes> packet = expected(awaited, timeout, script);
  check((message != nullptr) == packet.has_value(), "a message is received, or is not");
  if (message != nullptr) {
    check(message->getPacketLength() == packet->size(), "the packet's length");
    check(std::equal(packet->begin(), packet->end(), message->getPacketData()), "its bytes");
  }
}

}  // namespace orb::test
