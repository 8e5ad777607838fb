#pragma once

#include <cstdint>

#include "reference/catalogue_file.h"
#include "reference/text.h"

namespace orb::reference {

/// The splitmix64 generator.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next();
  /// A number from 0 to `bound` - 1.
  std::size_t below(std::size_t bound);
  /// Eight bytes a number, lowest first; the surplus of the last number is dropped.
  Bytes bytes(std::size_t count);

 private:
  std::uint64_t state_;
};

/// Deterministic random receive buffers: noise, runs of packets good and bad, and mutations of
/// them. It makes the same draws in the same order as buffer_generator.py, which explains them.
class BufferGenerator {
 public:
  static constexpr std::uint64_t kSeed = 0x6F72622D676E7373;

  explicit BufferGenerator(std::uint64_t seed) : random_(seed) {}

  Bytes nextBuffer();
  Random& random() { return random_; }

 private:
  Bytes freshBuffer();
  Bytes denseBuffer();
  Bytes stream(std::size_t target);
  Bytes piece();
  Bytes goodFrame();
  Bytes unknownFrame();
  Bytes frame(unsigned char id, unsigned char subId, std::size_t length);
  Bytes mutated(Bytes data);
  void mutate(Bytes& data);
  const CatalogueRow& anyRow();

  Random random_;
  Bytes previous_;
};

}  // namespace orb::reference
