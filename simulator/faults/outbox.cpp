#include "faults/outbox.h"

#include <utility>

namespace orb::sim {

void Outbox::add(Milliseconds due, Item item) {
  if (item.bytes.empty()) {
    return;
  }
  if (item.length == 0) {
    item.length = item.bytes.size();
  }
  size_ += item.bytes.size();
  waiting_.emplace(due, std::move(item));
}

Bytes Outbox::take(Milliseconds now) {
  Bytes output;
  while (next() <= now) {
    if (begun_.bytes.empty()) {
      begun_ = std::move(waiting_.begin()->second);
      waiting_.erase(waiting_.begin());
    }
    append(output, takeFirst(begun_.bytes, begun_.length));
    nextPiece_ = now + begun_.gap;
  }
  size_ -= output.size();
  return output;
}

Outbox::Milliseconds Outbox::next() const {
  if (!begun_.bytes.empty()) {
    return nextPiece_;
  }
  return waiting_.empty() ? Device::kNever : waiting_.begin()->first;
}

}  // namespace orb::sim
