#include "interpose/machine_code.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "interpose/x86_instruction.h"

namespace orb::sim {
namespace {

/// How many bytes on either side of an instruction tell that it is one.
constexpr std::size_t kContext = 64;

/// A piece of code with its surroundings, as far as there are any, and zeros beyond.
struct Piece {
  static constexpr std::size_t kSize = 8192;
  std::uint8_t bytes[kContext + kSize + kContext + kLongestInstruction];
  std::size_t first;  ///< where the piece itself begins
  std::size_t last;   ///< its end
};

#if defined(__aarch64__)

constexpr std::uint8_t kSystemCall[] = {0x01, 0x00, 0x00, 0xD4};

/// Pieces begin where an instruction does, and all instructions have one length.
bool isInstruction(const Piece& piece, std::size_t place) noexcept {
  return (place - piece.first) % sizeof kSystemCall == 0;
}

#elif defined(__x86_64__)

constexpr std::uint8_t kSystemCall[] = {0x0F, 0x05};

/// The place of the first instruction at or after `place`, when decoding from `start`; 0 where the
/// bytes on the way are no code.
std::size_t decode(const Piece& piece, std::size_t start, std::size_t place) noexcept {
  while (start < place) {
    const std::size_t length = instructionLength(piece.bytes + start);
    if (length == 0) return 0;
    start += length;
  }
  return start;
}

/// Decoding from a wrong start falls into step within a few instructions, so that most of several
/// starts in front come to an instruction if it is one. Among the bytes of a table they fail, or do
/// so behind it.
bool isInstruction(const Piece& piece, std::size_t place) noexcept {
  if (decode(piece, place, place + kContext) == 0) return false;
  std::size_t start = place - std::min(place, kContext);
  const std::size_t lastStart = place - std::min(place, kContext / 2);
  const std::size_t startCount = lastStart - start + 1;
  std::size_t arrivals = 0;
  for (; start <= lastStart; ++start) {
    if (decode(piece, start, place) == place) ++arrivals;
  }
  return arrivals * 2 > startCount;
}

#else
#error "the instruction that makes a system call is not known for this machine"
#endif

bool hasSystemCall(const Piece& piece) noexcept {
  std::size_t place = piece.first;
  while (place < piece.last) {
    const void* const found =
        memmem(piece.bytes + place, piece.last + sizeof kSystemCall - 1 - place, kSystemCall,
               sizeof kSystemCall);
    if (found == nullptr) return false;
    place = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - piece.bytes);
    if (isInstruction(piece, place)) return true;
    ++place;
  }
  return false;
}

}  // namespace

bool makesSystemCalls(const ProgramBytes& bytes, std::uint64_t offset,
                      std::uint64_t size) noexcept {
  Piece piece;
  for (std::uint64_t done = 0; done < size; done += Piece::kSize) {
    piece.first = done == 0 ? 0 : kContext;
    const std::uint64_t begin = done - piece.first;
    const std::size_t wanted =
        std::min<std::uint64_t>(size - begin, sizeof piece.bytes - kLongestInstruction);
    const std::size_t length = bytes.read(offset + begin, piece.bytes, wanted);
    std::memset(piece.bytes + length, 0, sizeof piece.bytes - length);
    piece.last = std::min(piece.first + Piece::kSize, length);
    if (hasSystemCall(piece)) return true;
    if (length < wanted) return false;  // the file ends
  }
  return false;
}

}  // namespace orb::sim
