#pragma once

#include <array>
#include <cstddef>
#include <iterator>

#include "orb-gnss/catalogue.h"
#include "protocol/sub_id.h"

namespace orb {

/// The catalogue's last message, in the row before the end marker.
constexpr unsigned char kLastMessage = std::size(ORBMessages) - 2;

/// Row numbers by identity, worked out by the compiler, so that a lookup is one array read. Every
/// identity has one row at most; a catalogue that breaks this does not compile.
class CatalogueIndex {
 public:
  static constexpr unsigned char kNoRow = 0xFF;

  explicit constexpr CatalogueIndex(const ORBMessageInfo (&catalogue)[std::size(ORBMessages)]) {
    rows_.fill(kNoRow);
    for (unsigned char row = 0; row <= kLastMessage; ++row) {
      unsigned char& entry = rows_[slot(catalogue[row].msgId)];
      if (entry != kNoRow || !canExist(catalogue[row].msgId)) {
        throw "two rows for one message, or a sub-id where there can be none";
      }
      entry = row;
    }
  }

  /// The row of a message, whatever its length; kNoRow when there is none.
  constexpr unsigned char rowOf(ORBMsgId id) const {
    return canExist(id) ? rows_[slot(id)] : kNoRow;
  }

 private:
  static constexpr std::size_t kPage = 256;
  static constexpr std::size_t kIdsWithSubId = kLastIdWithSubId - kFirstIdWithSubId + 1;

  static constexpr bool canExist(ORBMsgId id) { return hasSubId(id.id) || id.subId == 0; }

  // Page 0 holds the ids without sub-id; then one page of sub-ids for each id that has them.
  static constexpr std::size_t slot(ORBMsgId id) {
    return hasSubId(id.id) ? (id.id - kFirstIdWithSubId + 1U) * kPage + id.subId : id.id;
  }

  std::array<unsigned char, (1 + kIdsWithSubId) * kPage> rows_{};
};

/// The index of ORBMessages.
extern const CatalogueIndex kCatalogueIndex;

}  // namespace orb
