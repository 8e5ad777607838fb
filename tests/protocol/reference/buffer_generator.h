#pragma once

#include <cstdint>
#include <random>

#include "reference/catalogue_file.h"
#include "support/hex_text.h"

namespace orb::test {

/// Random receive buffers, the same for the same seed: noise, runs of packets good and bad, the
/// previous buffer once more or with more after it, and mutations of them.
class BufferGenerator {
 public:
  explicit BufferGenerator(std::uint64_t seed) : random_(seed) {}

  Bytes nextBuffer();
  /// A number from 0 to `bound` - 1.
  std::size_t below(std::size_t bound) { return random_() % bound; }

 private:
  Bytes freshBuffer();
  Bytes stream(std::size_t target);
  Bytes piece();
  Bytes goodFrame();
  Bytes frame(unsigned char id, unsigned char subId, std::size_t length);
  void mutate(Bytes& data);

  Bytes bytes(std::size_t count);
  unsigned char byte() { return static_cast<unsigned char>(below(256)); }
  const CatalogueRow& anyRow() { return catalogueRows()[below(catalogueRows().size() - 1)]; }

  std::mt19937_64 random_;
  Bytes previous_;
};

}  // namespace orb::test
