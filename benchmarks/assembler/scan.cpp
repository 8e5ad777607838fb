// Bytes in which nothing, or next to nothing, is found.

#include "limits/scan.h"

#include <benchmark/benchmark.h>

#include "assembler/assembler.h"
#include "support/sample_bytes.h"
#include "support/turn_rows.h"

namespace orb::bench {

Row scanOfText() {
  const Bytes bytes = text(4096);
  Assembler assembler;
  const Turns times =
      takeTurns([&] { benchmark::DoNotOptimize(assembler.update(bytes.data(), bytes.size())); },
                [&] { benchmark::DoNotOptimize(findStartByte(bytes.data(), bytes.size())); });
  return speedRow("assembler-text", "4 KiB of text without start bytes", times, 0.9,
                  static_cast<double>(bytes.size()));
}

Row scanOfNoise() {
  constexpr std::size_t kPiece = 4096;
  const Bytes bytes = randomBytes(64 * kPiece);
  Assembler assembler;
  const Turns times = takeTurns(
      [&] {
        inPieces(bytes, kPiece, [&](const unsigned char* piece, std::size_t length) {
          benchmark::DoNotOptimize(assembler.update(piece, length));
        });
      },
      [&] {
        inPieces(bytes, kPiece, [](const unsigned char* piece, std::size_t length) {
          benchmark::DoNotOptimize(countGoodPackets(piece, length));
        });
      });
  return speedRow("assembler-noise", "random bytes, 4 KiB pieces", times, 0.7,
                  static_cast<double>(bytes.size()));
}

}  // namespace orb::bench
