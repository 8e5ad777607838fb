#include "faults/answer.h"

#include <algorithm>
#include <utility>

#include "faults/frame_faults.h"
#include "model/message_ids.h"
#include "orb-sim/frame.h"

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
