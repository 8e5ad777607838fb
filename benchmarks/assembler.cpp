// The assembler on frames, on text and on noise.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "limits/frame_assembly.h"
#include "limits/scan.h"
#include "orb-gnss/message_builder.h"
#include "support/sample_bytes.h"
#include "support/turn_rows.h"

namespace {

using orb::bench::Bytes;
using orb::bench::Frame;
using orb::bench::Row;
using orb::bench::Series;
using orb::bench::timePerCall;
using orb::bench::Turns;

constexpr std::size_t kPacketOverhead = 7;
constexpr unsigned char kReplyId = 0x83;

// Calls `handle` with each piece of the bytes.
template <typename Handle>
void inPieces(const Bytes& bytes, std::size_t size, Handle handle) {
  for (std::size_t at = 0; at < bytes.size(); at += size) {
    handle(bytes.data() + at, std::min(size, bytes.size() - at));
  }
}

// A builder with its list.
struct Assembler {
  ORBMessageList list{};
  ORBMessageBuilder builder{&list};

  unsigned long update(const unsigned char* bytes, std::size_t length) {
    return builder.update(kReplyId, bytes, length);
  }
};

double countFrames(const Frame* list) {
  double count = 0;
  for (; list != nullptr; list = list->next) {
    ++count;
  }
  return count;
}

// Frames handed over in pieces of 1 KiB, the list emptied behind each.
Row framesInPieces(std::size_t payloadLength) {
  constexpr std::size_t kPiece = 1024;
  const Bytes bytes = orb::bench::packets(payloadLength, 64 * kPiece);

  double frames = 0;
  inPieces(bytes, kPiece, [&](const unsigned char* piece, std::size_t length) {
    Frame* const list = orb::bench::assembleFrames(piece, length, nullptr);
    frames += countFrames(list);
    orb::bench::releaseFrames(list);
  });

  Assembler assembler;
  const auto assemble = [&] {
    inPieces(bytes, kPiece, [&](const unsigned char* piece, std::size_t length) {
      assembler.update(piece, length);
      assembler.list.Empty();
    });
  };
  assemble();
  if (assembler.builder.getGoodMessageCount() != frames) {
    throw std::logic_error("the limit cuts other frames than the assembler");
  }
  const auto limit = [&] {
    inPieces(bytes, kPiece, [](const unsigned char* piece, std::size_t length) {
      orb::bench::releaseFrames(orb::bench::assembleFrames(piece, length, nullptr));
    });
  };
  const std::string size = std::to_string(payloadLength);
  return timeRow("assembler-pieces-" + size, "frames of " + size + " bytes, 1 KiB pieces",
                 orb::bench::takeTurns(assemble, limit), 1.5, frames, "frame");
}

// All frames in one call, and all messages kept. Nanoseconds. What is kept is released afterwards,
// outside of the time, and both start with a heap that has no memory left over.
double assembleAll(const Bytes& bytes) {
  malloc_trim(0);
  Assembler assembler;
  return timePerCall([&] { assembler.update(bytes.data(), bytes.size()); }, 1);
}

double assembleAllAtTheLimit(const Bytes& bytes) {
  malloc_trim(0);
  Frame* list = nullptr;
  const double time = timePerCall(
      [&] { list = orb::bench::assembleFrames(bytes.data(), bytes.size(), nullptr); }, 1);
  orb::bench::releaseFrames(list);
  return time;
}

Row framesInOneCall(std::size_t payloadLength) {
  constexpr std::size_t kLength = 4 << 20;
  constexpr int kTurns = 31;
  const Bytes bytes = orb::bench::packets(payloadLength, kLength);
  const double frames = static_cast<double>(kLength / (payloadLength + kPacketOverhead));
  const std::string size = std::to_string(payloadLength);
  const Turns times = orb::bench::takeTimedTurns(
      [&] { return assembleAll(bytes); }, [&] { return assembleAllAtTheLimit(bytes); }, kTurns);
  return timeRow("assembler-4MiB-" + size, "frames of " + size + " bytes, 4 MiB in one call", times,
                 1.5, frames, "frame");
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

Row growthRow(std::string work, std::string title) {
  return {.work = std::move(work),
          .title = std::move(title),
          .unit = "power",
          .series = Series{.x = "frames in one call", .y = "ns a frame", .points = {}}};
}

// How the time of a frame changes with the number of frames in the call, of the assembler and of
// the limit, for which new memory is as dear.
std::vector<Row> growthByFrames() {
  constexpr std::size_t kPayload = 20;
  constexpr int kTurns = 15;
  Row work = growthRow("assembler-growth", "its time grows with the frames to the power of");
  Row limit = growthRow("assembler-growth-limit", "the limit's");
  for (std::size_t frames = 256; frames <= 131072; frames *= 2) {
    const Bytes bytes = orb::bench::packets(kPayload, frames * (kPayload + kPacketOverhead));
    const Turns times = orb::bench::takeTimedTurns(
        [&] { return assembleAll(bytes); }, [&] { return assembleAllAtTheLimit(bytes); }, kTurns);
    const auto count = static_cast<double>(frames);
    work.series->points.emplace_back(count, orb::bench::median(times.work) / count);
    limit.series->points.emplace_back(count, orb::bench::median(times.limit) / count);
  }
  limit.value = powerOf(*limit.series);
  work.value = powerOf(*work.series);
  work.limit = limit.value;
  work.ratio = work.value / limit.value;
  work.bound = 1.05;
  return {work, limit};
}

Row text() {
  const Bytes bytes = orb::bench::text(4096);
  Assembler assembler;
  const Turns times = orb::bench::takeTurns(
      [&] { benchmark::DoNotOptimize(assembler.update(bytes.data(), bytes.size())); },
      [&] { benchmark::DoNotOptimize(orb::bench::findStartByte(bytes.data(), bytes.size())); });
  return speedRow("assembler-text", "4 KiB of text without start bytes", times, 0.9,
                  static_cast<double>(bytes.size()));
}

Row noise() {
  constexpr std::size_t kPiece = 4096;
  const Bytes bytes = orb::bench::randomBytes(64 * kPiece);
  Assembler assembler;
  const Turns times = orb::bench::takeTurns(
      [&] {
        inPieces(bytes, kPiece, [&](const unsigned char* piece, std::size_t length) {
          benchmark::DoNotOptimize(assembler.update(piece, length));
        });
      },
      [&] {
        inPieces(bytes, kPiece, [](const unsigned char* piece, std::size_t length) {
          benchmark::DoNotOptimize(orb::bench::countGoodPackets(piece, length));
        });
      });
  return speedRow("assembler-noise", "random bytes, 4 KiB pieces", times, 0.7,
                  static_cast<double>(bytes.size()));
}

const orb::bench::Work kWorks[] = {
    {"assembler-pieces",
     [] {
       return std::vector{framesInPieces(20), framesInPieces(59)};
     },
     5},
    {"assembler-4MiB",
     [] {
       return std::vector{framesInOneCall(20), framesInOneCall(59)};
     }},
    {"assembler-growth", growthByFrames},
    {"assembler-text", [] { return std::vector{text()}; }},
    {"assembler-noise", [] { return std::vector{noise()}; }},
};

}  // namespace

int main(int argc, char** argv) { return orb::bench::runWorks(argc, argv, kWorks); }
