#include "faults/answer.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "model/message_ids.h"
#include "model/nmea_format.h"
#include "model/packet_layout.h"

namespace orb::sim {
namespace {

AnswerPart partOf(const Frame& frame) {
  const bool isAcknowledgement =
      frame.id() == message::kAcknowledged || frame.id() == message::kRefused;
  return {.bytes = frame.packet(),
          .isAcknowledgement = isAcknowledgement,
          .isReply = !isAcknowledgement};
}

bool isMeant(const AnswerPart& part, FaultTarget target) {
  return (part.isReply && target != FaultTarget::Acknowledgement) ||
         (part.isAcknowledgement && target != FaultTarget::Reply);
}

Bytes::iterator checksumOf(Bytes& packet) { return packet.end() - kTrailerLength; }

message::Id otherThan(int id, message::Id usual, message::Id inItsPlace) {
  return id == usual ? inItsPlace : usual;
}

// Damage to the packet of one frame. One that other damage has left too short for it stays as it
// is.

/// Puts another message's id in the place of the id, and of the sub-id where there is one. The
/// checksum fits.
void giveWrongId(Bytes& packet) {
  constexpr std::size_t kShortest = kHeaderLength + 2 + kTrailerLength;
  if (packet.size() < kShortest) {
    return;
  }
  std::uint8_t& idByte = packet[kHeaderLength];
  std::uint8_t& subId = packet[kHeaderLength + 1];
  if (hasSubId(idByte)) {
    const message::Id wrong =
        otherThan(idByte << 8 | subId, message::kNavigationMode, message::kSecondBand);
    idByte = static_cast<std::uint8_t>(wrong >> 8);
    subId = static_cast<std::uint8_t>(wrong & 0xFF);
  } else {
    const message::Id wrong = otherThan(idByte << 8, message::kPowerMode, message::kUpdateRate);
    idByte = static_cast<std::uint8_t>(wrong >> 8);
  }
  *checksumOf(packet) = checksum(packet.begin() + kHeaderLength, checksumOf(packet));
}

void breakChecksum(Bytes& packet) {
  if (packet.size() < kTrailerLength) {
    return;
  }
  std::uint8_t& sum = *checksumOf(packet);
  sum = static_cast<std::uint8_t>(~sum);
}

/// Lets the length field claim `more` bytes more, at most 65535 in all.
void raiseLength(Bytes& packet, std::size_t more) {
  if (packet.size() < kHeaderLength) {
    return;
  }
  constexpr std::size_t kMost = 0xFFFF;
  const std::size_t length = payloadLength(packet.data());
  const std::size_t claimed = length + std::min(more, kMost - length);
  packet[kLengthPosition] = static_cast<std::uint8_t>(claimed >> 8);
  packet[kLengthPosition + 1] = static_cast<std::uint8_t>(claimed & 0xFF);
}

void insertInMiddle(Bytes& packet, const Bytes& bytes) {
  const auto middle = packet.begin() + static_cast<std::ptrdiff_t>(packet.size() / 2);
  packet.insert(middle, bytes.begin(), bytes.end());
}

Bytes noise(std::size_t count, Draw& draw) {
  Bytes bytes(count);
  std::ranges::generate(bytes, [&] { return static_cast<std::uint8_t>(draw.next() & 0xFF); });
  return bytes;
}

// What a receiver says that stands still.
constexpr std::array<const char*, 4> kSentences{
    "GPGGA,120000.000,4822.2740,N,01134.0734,E,1,09,0.9,475.9,M,44.2,M,,0000",
    "GPRMC,120000.000,A,4822.2740,N,01134.0734,E,000.0,000.0,010324,,,A",
    "GPGSA,A,3,02,05,07,09,13,15,20,28,30,,,,1.6,0.9,1.3",
    "GPZDA,120000.000,01,03,2024,00,00",
};

/// So many sentences, in their order and from the start again.
Bytes nmeaBurst(std::size_t sentences) {
  Bytes burst;
  for (std::size_t i = 0; i < sentences; ++i) {
    const std::string sentence = nmeaSentence(kSentences[i % kSentences.size()]);
    burst.insert(burst.end(), sentence.begin(), sentence.end());
  }
  return burst;
}

Answer spoilt(AnswerPart part, const FaultRule& rule, Draw& draw) {
  switch (rule.kind) {
    case FaultKind::NoReply:
      return {};
    case FaultKind::LateReply:
      part.delay += rule.delay;
      break;
    case FaultKind::WrongId:
      giveWrongId(part.bytes);
      break;
    case FaultKind::BadChecksum:
      breakChecksum(part.bytes);
      break;
    case FaultKind::CutShort:
      part.bytes.resize(std::min(part.bytes.size(), rule.length));
      break;
    case FaultKind::OverlongLength:
      raiseLength(part.bytes, rule.length);
      break;
    case FaultKind::Doubled:
      return {part, part};
    case FaultKind::Pieces:
      part.pieceLength = rule.length;
      part.gap = rule.delay;
      break;
    case FaultKind::NoiseBefore:
      return {{.bytes = noise(rule.length, draw), .delay = part.delay}, part};
    case FaultKind::NoiseInside:
      insertInMiddle(part.bytes, noise(rule.length, draw));
      break;
    case FaultKind::NmeaBurst:
      return {{.bytes = nmeaBurst(rule.length), .delay = part.delay}, part};
    default:  // is not about frames
      break;
  }
  return {part};
}

}  // namespace

Answer splitAnswer(const Bytes& bytes) {
  Answer answer;
  auto rest = bytes.begin();
  FrameReader reader;
  for (const Frame& frame : reader.push(bytes)) {
    const Bytes packet = frame.packet();
    const auto found = std::search(rest, bytes.end(), packet.begin(), packet.end());
    if (found != rest) {
      answer.push_back({Bytes(rest, found)});
    }
    answer.push_back(partOf(frame));
    rest = found + static_cast<std::ptrdiff_t>(packet.size());
  }
  if (rest != bytes.end()) {
    answer.push_back({Bytes(rest, bytes.end())});
  }
  const auto isReply = [](const AnswerPart& part) { return part.isReply; };
  if (std::none_of(answer.begin(), answer.end(), isReply)) {
    for (AnswerPart& part : answer) {
      part.isReply = part.isAcknowledgement;
    }
  }
  return answer;
}

void spoil(Answer& answer, const FaultRule& rule, Draw& draw) {
  Answer result;
  for (AnswerPart& part : answer) {
    if (isMeant(part, rule.target)) {
      const Answer parts = spoilt(std::move(part), rule, draw);
      result.insert(result.end(), parts.begin(), parts.end());
    } else {
      result.push_back(std::move(part));
    }
  }
  answer = std::move(result);
}

}  // namespace orb::sim
