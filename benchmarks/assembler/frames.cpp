// Frames to be cut out of the bytes.

#include <malloc.h>

#include <stdexcept>
#include <string>

#include "assembler/assembler.h"
#include "limits/frame_assembly.h"
#include "support/sample_bytes.h"
#include "support/turn_rows.h"

namespace orb::bench {

namespace {

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
  const double time =
      timePerCall([&] { list = assembleFrames(bytes.data(), bytes.size(), nullptr); }, 1);
  expectFrames(countFrames(list), frames);
  releaseFrames(list);
  return time;
}

}  // namespace

Turns assembleAllInTurns(const Bytes& bytes, std::size_t frames, int turns) {
  const auto count = static_cast<double>(frames);
  return takeTimedTurns([&] { return assembleAll(bytes, count); },
                        [&] { return assembleAllAtTheLimit(bytes, count); }, turns);
}

Row framesInPieces(std::size_t payloadLength) {
  constexpr std::size_t kPiece = 1024;
  const Bytes bytes = packets(payloadLength, 64 * kPiece);

  double frames = 0;
  inPieces(bytes, kPiece, [&](const unsigned char* piece, std::size_t length) {
    Frame* const list = assembleFrames(piece, length, nullptr);
    frames += countFrames(list);
    releaseFrames(list);
  });

  Assembler assembler;
  const auto assemble = [&] {
    inPieces(bytes, kPiece, [&](const unsigned char* piece, std::size_t length) {
      assembler.update(piece, length);
      assembler.list.Empty();
    });
  };
  assemble();
  expectFrames(assembler.builder.getGoodMessageCount(), frames);
  const auto limit = [&] {
    inPieces(bytes, kPiece, [](const unsigned char* piece, std::size_t length) {
      releaseFrames(assembleFrames(piece, length, nullptr));
    });
  };
  const std::string size = std::to_string(payloadLength);
  return timeRow("assembler-pieces-" + size,
                 "frames with " + size + " bytes of payload, 1 KiB pieces",
                 takeTurns(assemble, limit), 1.5, frames, "frame");
}

Row framesInOneCall(std::size_t payloadLength) {
  constexpr std::size_t kLength = 4 << 20;
  constexpr int kTurns = 31;
  const Bytes bytes = packets(payloadLength, kLength);
  const std::size_t frames = kLength / (payloadLength + kPacketOverhead);
  const std::string size = std::to_string(payloadLength);
  return timeRow(
      "assembler-4MiB-" + size, "frames with " + size + " bytes of payload, 4 MiB in one call",
      assembleAllInTurns(bytes, frames, kTurns), 1.5, static_cast<double>(frames), "frame");
}

}  // namespace orb::bench
