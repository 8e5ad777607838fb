#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

#include "orb-sim/bytes.h"
#include "orb-sim/device.h"
#include "orb-sim/frame.h"
#include "orb-sim/trace.h"

namespace orb::sim {

/// The receiver's side of a trace, as a device.
///
/// All that the receiver said between one packet of the client and the next is the answer to the
/// first of them. A packet of the same bytes gets the answer that the trace has to its next
/// occurrence; after the last one, those begin anew. A packet that the trace does not have is
/// refused, unless it is told otherwise. What came before the first packet is played from the
/// start, until a packet comes.
///
/// An answer comes with its recorded delays. What of the first second is still due when the next
/// packet comes is sent then; what came later, text as a rule that nobody had asked for, is given
/// up.
class ReplayDevice : public Device {
 public:
  /// When an answer comes.
  enum class Pace {
    Recorded,  ///< With its recorded delays.
    Fast,      ///< What came within a second comes at once.
  };

  /// What comes within this time of a packet is its answer.
  static constexpr std::chrono::milliseconds kAnswerTime{1000};

  /// Is called with each packet that the trace does not have, and returns the answer. It must not
  /// call the device.
  using AnswerUnknown = std::function<Bytes(const Frame& packet)>;

  /// The receiver's side of `trace`.
  explicit ReplayDevice(
      const std::vector<TraceRecord>& trace, Pace pace = Pace::Recorded,
      AnswerUnknown answerUnknown = [](const Frame& packet) { return refuse(packet.id()); });

  Bytes receive(const Bytes& bytes) override;
  Bytes tick(std::chrono::milliseconds elapsed) override;
  std::chrono::milliseconds untilNextOutput() const override;

 private:
  /// Bytes, and their delay after the packet that they answer or, in due_, their time.
  struct Piece {
    std::chrono::milliseconds at{0};
    Bytes bytes;
  };
  using Answer = std::vector<Piece>;
  struct Answers {
    std::vector<Answer> recorded;
    std::size_t next = 0;
  };

  Bytes takeLeftovers();
  Bytes takeDue();
  Bytes answerTo(const Frame& packet);
  void schedule(const Answer& answer);

  const Pace pace_;
  const AnswerUnknown answerUnknown_;

  mutable std::mutex mutex_;          ///< guards what follows
  std::map<Bytes, Answers> answers_;  ///< by payload
  FrameReader reader_;
  std::chrono::milliseconds now_{0};
  std::chrono::milliseconds answerEnd_{0};  ///< what is due before this belongs to an answer
  std::deque<Piece> due_;                   ///< in the order of their times
};

}  // namespace orb::sim
