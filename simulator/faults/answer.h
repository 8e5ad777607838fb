#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/draw.h"
#include "orb-sim/bytes.h"
#include "orb-sim/faults.h"

namespace orb::sim {

/// A part of what is said in answer to one message: one frame, or text that belongs to none.
struct AnswerPart {
  Bytes bytes;
  bool isAcknowledgement = false;
  bool isReply = false;  ///< also true for an acknowledgement that is the whole answer
  std::chrono::milliseconds delay{0};
  std::size_t pieceLength = 0;  ///< 0: whole
  std::chrono::milliseconds gap{0};
};

using Answer = std::vector<AnswerPart>;

/// The parts of an answer as a receiver gave it.
Answer splitAnswer(const Bytes& bytes);

/// Spoils the frames that the rule is meant for, where it is about frames; a rule about anything
/// else leaves the answer as it is.
void spoil(Answer& answer, const FaultRule& rule, Draw& draw);

}  // namespace orb::sim
