// The assembler on frames, on text and on noise.

#include "assembler/assembler.h"

namespace {

using namespace orb::bench;

constexpr std::size_t kPayloads[] = {20, 59};

template <typename MakeRow>
std::vector<Row> forEachPayload(MakeRow makeRow) {
  std::vector<Row> rows;
  for (const std::size_t payload : kPayloads) {
    rows.push_back(makeRow(payload));
  }
  return rows;
}

const Work kWorks[] = {
    {"assembler-pieces", [] { return forEachPayload(framesInPieces); }, 5},
    {"assembler-4MiB", [] { return forEachPayload(framesInOneCall); }},
    {"assembler-growth", growthByFrames},
    {"assembler-text", [] { return std::vector{scanOfText()}; }},
    {"assembler-noise", [] { return std::vector{scanOfNoise()}; }},
};

}  // namespace

int main(int argc, char** argv) { return runWorks(argc, argv, kWorks); }
