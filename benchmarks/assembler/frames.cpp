// Frames that the assembler cuts out of the bytes and keeps.

#include <malloc.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>

#include "assembler/assembler.h"
#include "limits/frame_assembly.h"
#include "support/turns.h"

namespace orb::bench {

namespace {

constexpr std::size_t kShortPayload = 20;
constexpr std::size_t kLongPayload = 59;

// What a packet is longer than its payload.
constexpr std::size_t kPacketOverhead = 7;

double countFrames(const Frame* list) {
  double count = 0;
  for (; list != nullptr; list = list->next) {
    ++count;
  }
  return count;
}

void expectFrames(double found, double expected) {
  if (found != expected) {
    throw std::logic_error("other frames were found than there are");
  }
}

Row frameRow(const std::string& work, const std::string& title, std::size_t payload,
             const Turns& turns, double frames) {
  const std::string length = std::to_string(payload);
  return compared({.work = work + "-" + length,
                   .title = "frames with " + length + " bytes of payload, " + title,
                   .unit = "ns/frame",
                   .bound = 1.5},
                  turns, frames);
}

// The list is emptied after each piece.
Row framesInPieces(std::size_t payload) {
  constexpr std::size_t kPiece = 1024;
  const Bytes bytes = packets(payload, 64 * kPiece);

  double frames = 0;
  forEachPiece(bytes, kPiece, kPiece, [&](const unsigned char* piece, std::size_t length) {
    Frame* const list = assembleFrames(piece, length);
    frames += countFrames(list);
    releaseFrames(list);
  });

  Assembler assembler;
  const auto assemble = [&] {
    forEachPiece(bytes, kPiece, kPiece, [&](const unsigned char* piece, std::size_t length) {
      assembler.updateAndEmpty(piece, length);
    });
  };
  assemble();
  expectFrames(assembler.builder.getGoodMessageCount(), frames);
  const auto limit = [&] {
    forEachPiece(bytes, kPiece, kPiece, [](const unsigned char* piece, std::size_t length) {
      releaseFrames(assembleFrames(piece, length));
    });
  };
  return frameRow("assembler-pieces", "1 KiB pieces", payload, takeTurns(assemble, limit), frames);
}

// Nanoseconds. What is kept is released afterwards, outside of the time, and both start with a heap
// that has no memory left over.
double assembleAll(const Bytes& bytes, double frames) {
  malloc_trim(0);
  Assembler assembler;
  const double time = timePerCall([&] { assembler.update(bytes.data(), bytes.size()); }, 1);
  expectFrames(assembler.builder.getGoodMessageCount(), frames);
  return time;
}

double assembleAllAtTheLimit(const Bytes& bytes, double frames) {
  malloc_trim(0);
  Frame* list = nullptr;
  const double time = timePerCall([&] { list = assembleFrames(bytes.data(), bytes.size()); }, 1);
  expectFrames(countFrames(list), frames);
  releaseFrames(list);
  return time;
}

// Throws where the assembler or the limit finds another number of frames than `frames`.
Turns assembleAllInTurns(const Bytes& bytes, double frames) {
  constexpr int kTurns = 31;
  return quietest(takeTimedTurns([&] { return assembleAll(bytes, frames); },
                                 [&] { return assembleAllAtTheLimit(bytes, frames); }, kTurns));
}

Row framesInOneCall(std::size_t payload) {
  constexpr std::size_t kLength = 4 << 20;
  const auto frames = static_cast<double>(kLength / (payload + kPacketOverhead));
  return frameRow("assembler-4MiB", "4 MiB in one call", payload,
                  assembleAllInTurns(packets(payload, kLength), frames), frames);
}

// The power of the number of frames with which the time of a call grows, by least squares over the
// points, which are nanoseconds a frame: 1 where a frame always takes as long.
double powerOf(const Series& series) {
  double sumX = 0, sumY = 0, sumXX = 0, sumXY = 0;
  for (const auto& [frames, time] : series.points) {
    const double x = std::log(frames);
    const double y = std::log(frames * time);
    sumX += x;
    sumY += y;
    sumXX += x * x;
    sumXY += x * y;
  }
  const auto count = static_cast<double>(series.points.size());
  return (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
}

Row growthRow(std::string work, std::string title, Series series) {
  const double power = powerOf(series);
  return {.work = std::move(work),
          .title = std::move(title),
          .unit = "power",
          .value = power,
          .series = std::move(series)};
}

// How the time of a frame changes with the number of frames in the call. The limit tells what new
// memory alone makes of it.
std::vector<Row> growthByFrames() {
  Series work{.x = "frames in one call", .y = "ns a frame", .label = "assembler", .points = {}};
  Series limit = work;
  limit.label = "limit";
  for (std::size_t frames = 256; frames <= 131072; frames *= 2) {
    const auto count = static_cast<double>(frames);
    const Bytes bytes = packets(kShortPayload, frames * (kShortPayload + kPacketOverhead));
    const Turn middle = quantile(assembleAllInTurns(bytes, count), 0.5);
    work.points.emplace_back(count, middle.work / count);
    limit.points.emplace_back(count, middle.limit / count);
  }
  Row row =
      growthRow("assembler-growth", "exponent of its time over the frames, to the limit's", work);
  Row limitRow =
      growthRow("assembler-growth-limit", "exponent of the limit's time over the frames", limit);
  row.limit = limitRow.value;
  row.ratio = row.value / limitRow.value;
  row.bound = 1.05;
  return {row, limitRow};
}

template <Row (*measure)(std::size_t payload)>
std::vector<Row> forBothPayloads() {
  return {measure(kShortPayload), measure(kLongPayload)};
}

const Work kWorks[] = {{"assembler-pieces", forBothPayloads<framesInPieces>, 7},
                       {"assembler-4MiB", forBothPayloads<framesInOneCall>},
                       {"assembler-growth", growthByFrames}};

}  // namespace

}  // namespace orb::bench

int main(int argc, char** argv) { return orb::bench::run(argc, argv, orb::bench::kWorks); }
