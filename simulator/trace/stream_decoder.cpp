#include "trace/stream_decoder.h"

#include <algorithm>
#include <charconv>

#include "model/packet_layout.h"

namespace orb::sim {
namespace {

// Bytes that are nothing in particular are handed on at this many, so that much of it is seen to
// come.
constexpr std::size_t kLongestRest = 4096;

/// A sentence without a checksum is right too.
bool hasRightChecksum(const std::uint8_t* first, const std::uint8_t* last) {
  constexpr int kBase = 16;
  constexpr std::ptrdiff_t kDigits = 2;
  const std::uint8_t* const star = std::find(first, last, '*');
  if (star == last) {
    return true;
  }
  const char* const digits = reinterpret_cast<const char*>(star + 1);
  const char* const digitsEnd = reinterpret_cast<const char*>(last);
  std::uint8_t said = 0;
  const auto [end, error] = std::from_chars(digits, digitsEnd, said, kBase);
  return error == std::errc{} && end == digits + kDigits && end == digitsEnd &&
         said == checksum(first + 1, star);
}

}  // namespace

void StreamDecoder::push(const Bytes& bytes) {
  append(pending_, bytes);
  scan(false);
}

void StreamDecoder::finish() {
  scan(true);
  handRest();
}

StreamDecoder::Verdict StreamDecoder::judge(std::size_t position) const {
  if (pending_[position] == kStart1) {
    return judgePacket(position);
  }
  if (pending_[position] == '$') {
    return judgeSentence(position);
  }
  return {};
}

StreamDecoder::Verdict StreamDecoder::judgePacket(std::size_t position) const {
  using Kind = Verdict::Kind;
  const std::uint8_t* const begin = pending_.data() + position;
  const std::size_t available = pending_.size() - position;
  const std::size_t length = available < kHeaderLength ? 0 : packetLength(begin);
  switch (sim::judgePacket(begin, available)) {
    case PacketVerdict::NoStart:
      return {};
    case PacketVerdict::Incomplete:
      return {Kind::Incomplete, length};
    case PacketVerdict::BadLength:
      return {Kind::Damaged, kHeaderLength, "impossible length"};
    case PacketVerdict::BadChecksum:
      return {Kind::Damaged, length, "wrong checksum"};
    case PacketVerdict::BadEnd:
      return {Kind::Damaged, length, "wrong end bytes"};
    case PacketVerdict::Good:
      break;
  }
  return {Kind::Whole, length};
}

StreamDecoder::Verdict StreamDecoder::judgeSentence(std::size_t position) const {
  using Kind = Verdict::Kind;
  const auto begin = pending_.begin() + static_cast<std::ptrdiff_t>(position);
  const auto longest =
      static_cast<std::ptrdiff_t>(std::min(pending_.size() - position, kLongestSentence + 1));
  const auto end = std::find_if_not(begin, begin + longest, isText);
  const auto textLength = static_cast<std::size_t>(end - begin);
  if (textLength > kLongestSentence) {
    return {};
  }
  if (end == pending_.end()) {
    return {Kind::Incomplete, textLength};
  }
  std::size_t length = textLength + 1;
  if (*end == '\r') {
    if (end + 1 == pending_.end()) {
      return {Kind::Incomplete, length};
    }
    ++length;
  }
  if (begin[static_cast<std::ptrdiff_t>(length) - 1] != '\n') {
    return {};
  }
  const bool isRight = hasRightChecksum(&*begin, &*begin + textLength);
  return {Kind::Whole, length, isRight ? "" : "wrong checksum"};
}

void StreamDecoder::scan(bool isEnd) {
  std::size_t position = 0;
  while (position < pending_.size()) {
    Verdict verdict = judge(position);
    if (verdict.kind == Verdict::Kind::Incomplete) {
      if (!isEnd) {
        break;
      }
      // What never became whole is a damaged packet if it has a header; a sentence is just text.
      const bool isPacket = pending_[position] == kStart1 && verdict.length > 0;
      verdict = isPacket ? Verdict{Verdict::Kind::Damaged, verdict.length, "cut short"} : Verdict{};
    }
    if (verdict.kind == Verdict::Kind::Whole) {
      hand(position, verdict);
      position += verdict.length;
    } else {
      skip(position, verdict);
      ++position;
    }
  }
  pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(position));
  pendingOffset_ += position;
}

void StreamDecoder::hand(std::size_t position, const Verdict& verdict) {
  handRest();
  const auto begin = pending_.begin() + static_cast<std::ptrdiff_t>(position);
  const bool isPacket = *begin == kStart1;
  sink_({isPacket ? StreamItem::Kind::Packet : StreamItem::Kind::Sentence,
         pendingOffset_ + position,
         Bytes(begin, begin + static_cast<std::ptrdiff_t>(verdict.length)), verdict.length,
         verdict.trouble});
}

/// Adds a byte that begins nothing whole to the bytes before it that do not either.
void StreamDecoder::skip(std::size_t position, const Verdict& verdict) {
  const std::uint64_t offset = pendingOffset_ + position;
  const bool isDamaged = verdict.kind == Verdict::Kind::Damaged;
  if (isDamaged || endsRest(offset)) {
    handRest();
  }
  if (rest_.length == 0) {
    rest_.kind = isDamaged ? StreamItem::Kind::Damaged : StreamItem::Kind::Other;
    rest_.offset = offset;
    rest_.trouble = verdict.trouble;
    restEnd_ = offset + verdict.length;
    restIsText_ = !isDamaged;
  }
  if (isDamaged || rest_.kind == StreamItem::Kind::Damaged ||
      rest_.length < StreamItem::kShownBytes) {
    rest_.bytes.push_back(pending_[position]);
  }
  ++rest_.length;
  const std::uint8_t byte = pending_[position];
  restIsText_ = restIsText_ && (isText(byte) || byte == '\r' || byte == '\n');
  // Text is handed on by lines.
  if (restIsText_ && byte == '\n') {
    handRest();
  }
}

/// Whether a skipped byte at this offset does not belong to the skipped ones before it.
bool StreamDecoder::endsRest(std::uint64_t offset) const {
  return rest_.kind == StreamItem::Kind::Damaged ? offset >= restEnd_
                                                 : rest_.length >= kLongestRest;
}

void StreamDecoder::handRest() {
  if (rest_.length == 0) {
    return;
  }
  const StreamItem item = std::move(rest_);
  rest_ = {};
  sink_(item);
}

}  // namespace orb::sim
