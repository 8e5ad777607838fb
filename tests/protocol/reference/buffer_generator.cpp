#include "reference/buffer_generator.h"

#include <algorithm>
#include <utility>

namespace orb::test {
namespace {

constexpr std::size_t kLongestTarget = 300;

void append(Bytes& data, const Bytes& more) { data.insert(data.end(), more.begin(), more.end()); }

Bytes header(std::size_t length) {
  return {0xA0, 0xA1, static_cast<unsigned char>(length >> 8), static_cast<unsigned char>(length)};
}

/// The payload as it stands, framed with the claimed length and the checksum over that many bytes.
Bytes frameAround(const Bytes& payload, std::size_t length) {
  unsigned char checksum = 0;
  for (std::size_t k = 0; k < std::min(length, payload.size()); ++k) {
    checksum ^= payload[k];
  }
  Bytes frame = header(length);
  append(frame, payload);
  append(frame, {checksum, 0x0D, 0x0A});
  return frame;
}

}  // namespace

Bytes BufferGenerator::nextBuffer() {
  previous_ = freshBuffer();
  return previous_;
}

Bytes BufferGenerator::freshBuffer() {
  static const Bytes kDenseAlphabet = hex("A0 A0 A0 A0 A1 A1 A1 00 00 00 01 01 02 83 C3 10");
  const std::size_t kind = below(16);
  const std::size_t target = below(kLongestTarget + 1);
  if (kind == 0) {
    return bytes(target);
  }
  if (kind == 1) {
    Bytes buffer(target);
    std::generate(buffer.begin(), buffer.end(), [this] { return kDenseAlphabet[below(16)]; });
    return buffer;
  }
  if (kind == 2 && previous_.size() <= kLongestTarget) {
    Bytes buffer = previous_;
    append(buffer, stream(below(61)));
    return buffer;
  }
  if (kind == 3) {
    return previous_;
  }
  Bytes buffer = stream(target);
  for (std::size_t count = kind < 8 ? 0 : 1 + below(4); count > 0 && !buffer.empty(); --count) {
    mutate(buffer);
  }
  return buffer;
}

/// Pieces until there are at least `target` bytes.
Bytes BufferGenerator::stream(std::size_t target) {
  Bytes buffer;
  while (buffer.size() < target) {
    append(buffer, piece());
  }
  return buffer;
}

Bytes BufferGenerator::piece() {
  static const Bytes kFalseStarts[] = {hex("A0"), hex("A0A0A1"),   hex("A0A1"), hex("A0A0"),
                                       hex("A1"), hex("A0A1A0A1"), hex("0D0A"), hex("A00D0A")};
  Bytes data = goodFrame();
  switch (below(16)) {
    case 0: {  // of any length
      const CatalogueRow& row = anyRow();
      return frame(row.id, row.subId, below(24));
    }
    case 1:  // with a wrong checksum
      data[data.size() - 3] ^= static_cast<unsigned char>(1 + below(255));
      return data;
    case 2:  // with other end bytes
      data[data.size() - 2] = byte();
      data[data.size() - 1] = byte();
      return data;
    case 3:  // cut
      data.resize(below(data.size() + 1));
      return data;
    case 4: {  // within a packet of any id, which mostly is not in the catalogue
      Bytes payload = bytes(2);
      append(payload, data);
      return frameAround(payload, payload.size());
    }
    case 5: {  // nothing but its header and id
      const CatalogueRow& row = anyRow();
      Bytes start = header(below(512));
      append(start, {row.id, row.subId});
      return start;
    }
    case 6:
      return frame(static_cast<unsigned char>(0x83 + below(2)), 0, 2);
    case 7:
      return frame(0xC3, 0, 3);
    case 8:
      return kFalseStarts[below(std::size(kFalseStarts))];
    case 9:
      return bytes(below(12));
    default:
      return data;
  }
}

Bytes BufferGenerator::goodFrame() {
  const CatalogueRow& row = anyRow();
  return frame(row.id, row.subId, row.minLength + below(row.maxLength - row.minLength + 1U));
}

/// A frame that claims `length`; it has its id bytes even where the length is too small.
Bytes BufferGenerator::frame(unsigned char id, unsigned char subId, std::size_t length) {
  Bytes payload = hasSubId(id) ? Bytes{id, subId} : Bytes{id};
  append(payload, bytes(length > payload.size() ? length - payload.size() : 0));
  return frameAround(payload, length);
}

void BufferGenerator::mutate(Bytes& data) {
  const std::size_t place = below(data.size());
  const auto at = [&data](std::size_t k) {
    return data.begin() + static_cast<std::ptrdiff_t>(std::min(k, data.size()));
  };
  switch (below(8)) {
    case 0:
      data[place] ^= static_cast<unsigned char>(1U << below(8));
      break;
    case 1:
      data[place] = byte();
      break;
    case 2:
      data[place] = static_cast<unsigned char>(0xA0 + below(2));
      break;
    case 3:
      data.insert(at(place), byte());
      break;
    case 4:
      data.erase(at(place), at(place + 1 + below(4)));
      break;
    case 5:
      data.resize(place);
      break;
    case 6: {
      const Bytes repeated(at(place), at(place + 1 + below(16)));
      data.insert(at(below(data.size() + 1)), repeated.begin(), repeated.end());
      break;
    }
    default:
      data.erase(data.begin(), at(place));
  }
}

Bytes BufferGenerator::bytes(std::size_t count) {
  Bytes data(count);
  std::generate(data.begin(), data.end(), [this] { return byte(); });
  return data;
}

}  // namespace orb::test
