// Bytes in which the assembler finds nothing, or next to nothing.

#include "limits/scan.h"

#include "assembler/assembler.h"
#include "support/turns.h"

namespace orb::bench {

namespace {

// Pieces start at each of the alignments that a cache line has, and the row counts them together:
// by the alignment alone, a scan takes up to twice as long on some processors.
constexpr std::size_t kAlignments = 64;

Row scanRow(Row row, const Bytes& bytes, std::size_t piece, std::size_t stride) {
  Assembler assembler;
  const Turns turns = takeTurns(
      [&] {
        forEachPiece(bytes, piece, stride, [&](const unsigned char* start, std::size_t length) {
          assembler.update(start, length);
        });
      },
      [&] { forEachPiece(bytes, piece, stride, countGoodPackets); });
  row.sense = Sense::kAtLeast;
  row.unit = "GB/s";
  return compared(row, turns, static_cast<double>(kAlignments * piece));
}

// Long enough that what a call costs besides the scan is a small part of it on every processor.
std::vector<Row> text() {
  constexpr std::size_t kPiece = 8192;
  return {scanRow(
      {.work = "assembler-text", .title = "8 KiB of text without start bytes", .bound = 0.9},
      textBytes(kPiece + kAlignments - 1), kPiece, 1)};
}

// So many different ones that a processor cannot learn where the start bytes are.
std::vector<Row> noise() {
  constexpr std::size_t kPiece = 4096;
  return {scanRow({.work = "assembler-noise", .title = "random bytes, 4 KiB pieces", .bound = 0.7},
                  randomBytes(kAlignments * (kPiece + 1)), kPiece, kPiece + 1)};
}

const Work kWorks[] = {{"assembler-text", text}, {"assembler-noise", noise}};

}  // namespace

}  // namespace orb::bench

int main(int argc, char** argv) { return orb::bench::run(argc, argv, orb::bench::kWorks); }
