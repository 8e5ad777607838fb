#include "faults/answer.h"

#include <algorithm>
#include <utility>

#include "faults/frame_faults.h"
#include "faults/nmea_burst.h"
#include "orb-sim/frame.h"

namespace orb::sim {
namespace {

bool isAcknowledgement(const Frame& frame) {
  constexpr std::uint8_t kAcknowledged = 0x83;
  constexpr std::uint8_t kRefused = 0x84;
  return frame.payload[0] == kAcknowledged || frame.payload[0] == kRefused;
}

AnswerPart text(Bytes bytes) {
  AnswerPart part;
  part.bytes = std::move(bytes);
  return part;
}

AnswerPart part(const Frame& frame) {
  AnswerPart part = text(frame.packet());
  part.isAcknowledgement = isAcknowledgement(frame);
  part.isReply = !part.isAcknowledgement;
  return part;
}

bool isMeant(const AnswerPart& part, FaultTarget target) {
  switch (target) {
    case FaultTarget::Reply:
      return part.isReply;
    case FaultTarget::Acknowledgement:
      return part.isAcknowledgement;
    case FaultTarget::Both:
      return part.isReply || part.isAcknowledgement;
  }
  return false;
}

/// Text that comes just in front of a part.
AnswerPart inFrontOf(const AnswerPart& part, Bytes bytes) {
  AnswerPart front = text(std::move(bytes));
  front.delay = part.delay;
  return front;
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
      return {inFrontOf(part, noise(rule.length, draw)), part};
    case FaultKind::NoiseInside:
      insertInMiddle(part.bytes, noise(rule.length, draw));
      break;
    case FaultKind::NmeaBurst:
      return {inFrontOf(part, nmeaBurst(rule.length)), part};
    case FaultKind::Refusal:
    case FaultKind::WrongValue:
    case FaultKind::Silence:
    case FaultKind::HangUp:
    case FaultKind::SlowRestart:
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
      answer.push_back(text(Bytes(rest, found)));
    }
    answer.push_back(part(frame));
    rest = found + static_cast<std::ptrdiff_t>(packet.size());
  }
  if (rest != bytes.end()) {
    answer.push_back(text(Bytes(rest, bytes.end())));
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
