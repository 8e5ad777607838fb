#pragma once

#include <chrono>
#include <cstddef>
#include <map>

#include "orb-sim/bytes.h"
#include "orb-sim/device.h"

namespace orb::sim {

/// What is to be said later, at times that count from when the device began.
///
/// What was added earlier is said earlier where both are due. What is said in pieces is not mixed
/// with anything else: all the rest waits until its last piece is out.
class Outbox {
 public:
  using Milliseconds = std::chrono::milliseconds;

  /// Bytes in pieces of `length`, the first when they are due and the others `gap` apart; a length
  /// of 0 leaves them whole.
  struct Item {
    Bytes bytes;
    std::size_t length = 0;
    Milliseconds gap{0};
  };

  void add(Milliseconds due, Item item);

  /// Whether it holds so much that whoever causes more has to wait.
  bool isFull() const { return size_ > kMostBytes; }

  /// What is to be said at `now`. Pieces keep their gaps where this is called at each next().
  Bytes take(Milliseconds now);

  /// When something is to be said next, or Device::kNever.
  Milliseconds next() const;

 private:
  static constexpr std::size_t kMostBytes = std::size_t{1} << 16;

  std::multimap<Milliseconds, Item> waiting_;  ///< by the time at which they are due
  Item begun_;                                 ///< the pieces that are left of one
  Milliseconds nextPiece_{0};
  std::size_t size_ = 0;  ///< bytes in all
};

}  // namespace orb::sim
