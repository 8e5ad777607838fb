#pragma once

#include <chrono>
#include <iosfwd>
#include <utility>

#include "orb-sim/trace.h"
#include "trace/description.h"
#include "trace/listing.h"
#include "trace/stream_decoder.h"

namespace orb::sim {

/// Writes down in words what two sides say to each other: a line for each message, with its time
/// and who has said it.
class Transcript {
 public:
  /// What stays incomplete for so long is written down as it is.
  static constexpr std::chrono::microseconds kPatience = std::chrono::seconds(1);

  /// `output` must outlive this.
  explicit Transcript(std::ostream& output, ListingForm form = {})
      : listing_(output, std::move(form)) {}

  /// The time of day at which the records' time begins.
  void setStart(WallTime start) { listing_.setStart(start); }

  /// Takes the next piece; pieces come in the order of their times.
  void add(const TraceRecord& record);

  /// Says that it is now so late.
  void reach(std::chrono::microseconds now);

  /// Whether reach() may have something to write.
  bool isMidItem() const;

  /// Writes down what is incomplete, and how much there was of what.
  void finish();

 private:
  struct Side {
    Side(Transcript& transcript, Speaker speaker);

    std::chrono::microseconds last{0};
    StreamCounts counts;
    StreamDecoder decoder;
  };

  Listing listing_;
  Side client_{*this, Speaker::Client};
  Side receiver_{*this, Speaker::Receiver};
};

}  // namespace orb::sim
