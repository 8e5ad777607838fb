#pragma once

namespace orb {

constexpr unsigned char kFirstIdWithSubId = 0x62;
constexpr unsigned char kLastIdWithSubId = 0x6F;

/// Whether messages of this id carry a sub-id.
constexpr bool hasSubId(unsigned char id) {
  return id >= kFirstIdWithSubId && id <= kLastIdWithSubId;
}

/// Bytes of a payload before its body: the id, and the sub-id where there is one.
constexpr unsigned long idLength(unsigned char id) { return hasSubId(id) ? 2 : 1; }

}  // namespace orb
