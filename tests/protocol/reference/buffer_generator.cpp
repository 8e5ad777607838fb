#include "reference/buffer_generator.h"

#include <algorithm>
#include <utility>

namespace orb::reference {
namespace {

constexpr std::size_t kLongestTarget = 300;
constexpr unsigned char kStart1 = 0xA0;
constexpr unsigned char kStart2 = 0xA1;
constexpr unsigned char kDenseAlphabet[16] = {0xA0, 0xA0, 0xA0, 0xA0, 0xA1, 0xA1, 0xA1, 0x00,
                                              0x00, 0x00, 0x01, 0x01, 0x02, 0x83, 0xC3, 0x10};

const Bytes& falseStart(std::size_t number) {
  static const Bytes starts[8] = {
      {0xA0}, {0xA0, 0xA0, 0xA1},       {0xA0, 0xA1}, {0xA0, 0xA0},
      {0xA1}, {0xA0, 0xA1, 0xA0, 0xA1}, {0x0D, 0x0A}, {0xA0, 0x0D, 0x0A}};
  return starts[number];
}

void append(Bytes& data, const Bytes& more) { data.insert(data.end(), more.begin(), more.end()); }

Bytes header(std::size_t length) {
  return {kStart1, kStart2, static_cast<unsigned char>(length >> 8),
          static_cast<unsigned char>(length & 0xFF)};
}

/// The payload as it stands, framed with the claimed length and the checksum over that many bytes.
Bytes frameAround(const Bytes& payload, std::size_t length) {
  unsigned char checksum = 0;
  for (std::size_t k = 0; k < std::min(length, payload.size()); ++k) {
    checksum = static_cast<unsigned char>(checksum ^ payload[k]);
  }
  Bytes frame = header(length);
  append(frame, payload);
  append(frame, {checksum, 0x0D, 0x0A});
  return frame;
}

void erase(Bytes& data, std::size_t place, std::size_t count) {
  const auto first = data.begin() + static_cast<std::ptrdiff_t>(place);
  const auto left = data.size() - place;
  data.erase(first, first + static_cast<std::ptrdiff_t>(std::min(count, left)));
}

}  // namespace

std::uint64_t Random::next() {
  state_ += 0x9E3779B97F4A7C15;
  std::uint64_t z = state_;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
  return z ^ (z >> 31);
}

std::size_t Random::below(std::size_t bound) {
  return static_cast<std::size_t>(next() >> 32) % bound;
}

Bytes Random::bytes(std::size_t count) {
  Bytes data;
  while (data.size() < count) {
    auto number = next();
    for (int k = 0; k < 8 && data.size() < count; ++k, number >>= 8) {
      data.push_back(static_cast<unsigned char>(number & 0xFF));
    }
  }
  return data;
}

Bytes BufferGenerator::nextBuffer() {
  previous_ = freshBuffer();
  return previous_;
}

Bytes BufferGenerator::freshBuffer() {
  const auto kind = random_.below(16);
  if (kind == 0) {
    return random_.bytes(random_.below(kLongestTarget + 1));
  }
  if (kind == 1) {
    return denseBuffer();
  }
  if (kind == 2 && previous_.size() <= kLongestTarget) {
    Bytes buffer = previous_;
    append(buffer, stream(random_.below(61)));
    return buffer;
  }
  if (kind == 3) {
    return previous_;
  }
  Bytes buffer = stream(random_.below(kLongestTarget + 1));
  return kind < 8 ? buffer : mutated(std::move(buffer));
}

Bytes BufferGenerator::denseBuffer() {
  Bytes buffer = random_.bytes(random_.below(kLongestTarget + 1));
  for (auto& byte : buffer) {
    byte = kDenseAlphabet[byte % 16];
  }
  return buffer;
}

Bytes BufferGenerator::stream(std::size_t target) {
  Bytes buffer;
  while (buffer.size() < target) {
    append(buffer, piece());
  }
  return buffer;
}

Bytes BufferGenerator::piece() {
  const auto kind = random_.below(16);
  switch (kind) {
    case 6: {
      const auto& row = anyRow();
      return frame(row.id, row.subId, random_.below(24));
    }
    case 7: {
      Bytes data = goodFrame();
      auto& checksum = data[data.size() - 3];
      checksum = static_cast<unsigned char>(checksum ^ (1 + random_.below(255)));
      return data;
    }
    case 8:
      return frame(static_cast<unsigned char>(0x83 + random_.below(2)), 0, 2);
    case 9:
      return frame(0xC3, 0, 3);
    case 10: {
      Bytes data = goodFrame();
      data.resize(random_.below(data.size() + 1));
      return data;
    }
    case 11:
      return unknownFrame();
    case 12:
      return falseStart(random_.below(8));
    case 13:
      return random_.bytes(random_.below(12));
    case 14: {
      Bytes data = goodFrame();
      data.resize(data.size() - 2);
      append(data, random_.bytes(2));
      return data;
    }
    case 15: {
      const auto& row = anyRow();
      Bytes data = header(random_.below(512));
      append(data, {row.id, row.subId});
      return data;
    }
    default:
      return goodFrame();
  }
}

Bytes BufferGenerator::goodFrame() {
  const auto& row = anyRow();
  const auto choices = static_cast<std::size_t>(row.maxLength - row.minLength + 1);
  return frame(row.id, row.subId, row.minLength + random_.below(choices));
}

Bytes BufferGenerator::unknownFrame() {
  Bytes payload = random_.bytes(2);
  append(payload, goodFrame());
  return frameAround(payload, payload.size());
}

Bytes BufferGenerator::frame(unsigned char id, unsigned char subId, std::size_t length) {
  Bytes payload = hasSubId(id) ? Bytes{id, subId} : Bytes{id};
  append(payload, random_.bytes(length > payload.size() ? length - payload.size() : 0));
  return frameAround(payload, length);
}

Bytes BufferGenerator::mutated(Bytes data) {
  for (auto count = 1 + random_.below(4); count > 0 && !data.empty(); --count) {
    mutate(data);
  }
  return data;
}

void BufferGenerator::mutate(Bytes& data) {
  const auto kind = random_.below(8);
  const auto place = random_.below(data.size());
  const auto at = [&data](std::size_t k) { return data.begin() + static_cast<std::ptrdiff_t>(k); };
  switch (kind) {
    case 0:
      data[place] = static_cast<unsigned char>(data[place] ^ (1U << random_.below(8)));
      break;
    case 1:
      data[place] = static_cast<unsigned char>(random_.below(256));
      break;
    case 2:
      data.insert(at(place), static_cast<unsigned char>(random_.below(256)));
      break;
    case 3:
      erase(data, place, 1 + random_.below(4));
      break;
    case 4:
      data.resize(place);
      break;
    case 5: {
      const auto end = std::min(place + 1 + random_.below(16), data.size());
      const Bytes repeated(at(place), at(end));
      data.insert(at(random_.below(data.size() + 1)), repeated.begin(), repeated.end());
      break;
    }
    case 6:
      data[place] = static_cast<unsigned char>(kStart1 + random_.below(2));
      break;
    default:
      erase(data, 0, place);
  }
}

const CatalogueRow& BufferGenerator::anyRow() {
  const auto& rows = catalogueRows();
  return rows[random_.below(rows.size() - 1)];
}

}  // namespace orb::reference
