#pragma once

#include <chrono>
#include <iosfwd>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "model/message_ids.h"
#include "orb-sim/trace.h"
#include "trace/stream_decoder.h"

namespace orb::sim {

/// What is printed of what has been found, and how.
struct ListingForm {
  bool json = false;
  bool colour = false;  ///< for a terminal; not in JSON
  bool withoutSentences = false;
  bool wallClock = false;           ///< the time of day with what is said, where that is known
  std::set<message::Id> only = {};  ///< these messages and nothing else; empty: everything
};

/// Prints items, a line each.
class Listing {
 public:
  /// `output` must outlive this.
  Listing(std::ostream& output, ListingForm form) : output_(output), form_(std::move(form)) {}

  /// The time of day at which what is said began to be heard.
  void setStart(WallTime start) { start_ = start; }

  /// An item with its offset.
  void add(const StreamItem& item);

  /// An item that somebody has said.
  void add(const StreamItem& item, Speaker from, std::chrono::microseconds at);

  /// A line after all of them; JSON has none.
  void conclude(const std::string& line);

 private:
  struct Said {
    Speaker from;
    std::chrono::microseconds at;
  };

  void print(const StreamItem& item, const Said* said);
  bool isWanted(const StreamItem& item) const;
  std::string prefix(const StreamItem& item, const Said* said) const;
  std::string json(const StreamItem& item, const Said* said) const;
  const char* colour(const StreamItem& item, const Said* said) const;
  std::optional<WallTime> wallTime(const Said* said) const;

  std::ostream& output_;
  const ListingForm form_;
  std::optional<WallTime> start_;
};

}  // namespace orb::sim
