// The assembler on frames, on text and on noise.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
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

// How the time of a frame changes with the number of frames in the call.
Series timeByFrames(std::size_t payloadLength) {
  constexpr int kRepeats = 15;
  Series series{.x = "frames in one call", .y = "ns a frame", .points = {}};
  for (std::size_t frames = 256; frames <= 131072; frames *= 2) {
    const Bytes bytes =
        orb::bench::packets(payloadLength, frames * (payloadLength + kPacketOverhead));
    std::vector<double> times;
    for (int repeat = 0; repeat < kRepeats; ++repeat) {
      times.push_back(assembleAll(bytes));
    }
    series.points.emplace_back(frames, orb::bench::median(times) / static_cast<double>(frames));
  }
  return series;
}

Row framesInOneCall(std::size_t payloadLength) {
  constexpr std::size_t kLength = 4 << 20;
  constexpr int kTurns = 31;
  const Bytes bytes = orb::bench::packets(payloadLength, kLength);
  const double frames = static_cast<double>(kLength / (payloadLength + kPacketOverhead));
  const std::string size = std::to_string(payloadLength);
  const Turns times = orb::bench::takeTimedTurns(
      [&] { return assembleAll(bytes); }, [&] { return assembleAllAtTheLimit(bytes); }, kTurns);
  Row row = timeRow("assembler-4MiB-" + size, "frames of " + size + " bytes, 4 MiB in one call",
                    times, 1.5, frames, "frame");
  return row;
}

// The longest time of a frame, over all numbers of frames in a call, through the shortest.
Row linearity(std::size_t payloadLength) {
  Row row{.work = "assembler-linear-" + std::to_string(payloadLength),
          .title = "its dearest frame, of 256 to 131072 in a call, by its cheapest",
          .unit = "times"};
  row.series = timeByFrames(payloadLength);
  const auto [least, most] = std::minmax_element(
      row.series->points.begin(), row.series->points.end(),
      [](const auto& one, const auto& other) { return one.second < other.second; });
  row.value = most->second / least->second;
  row.bound = 1.5;
  return row;
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
     }},
    {"assembler-4MiB",
     [] {
       return std::vector{framesInOneCall(20), framesInOneCall(59)};
     }},
    {"assembler-linear", [] { return std::vector{linearity(20)}; }},
    {"assembler-text", [] { return std::vector{text()}; }},
    {"assembler-noise", [] { return std::vector{noise()}; }},
};

}  // namespace

int main(int argc, char** argv) { return orb::bench::runWorks(argc, argv, kWorks); }
