#include "support/assembler_model.h"

#include <algorithm>
#include <iterator>

#include "orb-gnss/catalogue.h"

namespace orb::fuzz {

namespace {

constexpr std::size_t kRows = std::size(ORBMessages) - 1;  // without the end marker

std::size_t rowOf(ORBMsgId id) {
  std::size_t row = 0;
  while (row < kRows && typeOf(ORBMessages[row].msgId) != typeOf(id)) {
    ++row;
  }
  return row;
}

bool hasSubId(std::uint8_t id) { return id >= 0x62 && id <= 0x6F; }

}  // namespace

Scan::Scan(const Bytes& buffer) { position = scan(buffer); }

unsigned int Scan::count(ORBMessageMsgValue type) const {
  return static_cast<unsigned int>(std::count_if(
      messages.begin(), messages.end(), [type](const auto& m) { return typeOf(m.id) == type; }));
}

unsigned long Scan::scan(const Bytes& buffer) {
  const std::size_t size = buffer.size();
  std::size_t handled = 0;
  std::size_t i = 0;
  while (i < size) {
    if (i + 2 >= size) return i + 2 == size ? handled : 0;
    if (buffer[i] != 0xA0) {
      i += 1;
      continue;
    }
    if (buffer[i + 1] != 0xA1) {
      i += 2;
      continue;
    }
    if (i + 6 >= size) return handled;
    const std::uint8_t first = buffer[i + 4];
    const ORBMsgId id{first, hasSubId(first) ? buffer[i + 5] : std::uint8_t{0}};
    const std::size_t row = rowOf(id);
    if (row == kRows) {
      ++unknown;
      i += 2;
      continue;
    }
    if (row == kRows - 1) ++unknown;  // the last message counts here too
    const std::size_t length = buffer[i + 2] * 256U + buffer[i + 3];
    if (i + 5 + length >= size) return handled;

    std::uint8_t sum = 0;
    for (std::size_t k = 0; k < length; ++k) sum ^= buffer[i + 4 + k];
    if (sum == buffer[i + 4 + length]) {
      const auto begin = buffer.begin() + static_cast<std::ptrdiff_t>(i);
      Bytes packet(begin, begin + static_cast<std::ptrdiff_t>(5 + length));
      packet.insert(packet.end(), {0x0D, 0x0A});
      messages.push_back({id, packet});
      ++good;
      handled = i + (hasSubId(first) ? 7 : 6) + length;
    } else {
      ++errored;
      handled = i + 5 + length;
    }
    i = handled;
  }
  return 0;
}

}  // namespace orb::fuzz
