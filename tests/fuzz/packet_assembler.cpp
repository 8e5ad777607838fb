// The assembler and its list, with a buffer that grows by pieces of any length. Input: how messages
// are taken out after each piece, the lengths of all pieces but the last, the bytes.

#include "reference/assembler_pair.h"
#include "support/check.h"
#include "support/input.h"

namespace orb::test {
namespace {

constexpr std::size_t kPieces = 7;
constexpr unsigned short kPerhapsNotThere = 0x8300;

void takeSome(AssemblerPair& pair, unsigned int choice) {
  switch (choice) {
    case 1:
      pair.takeOldest();
      break;
    case 2:
      pair.takeNewestOf(pair.someType());
      break;
    case 3:
      pair.takeNewestOf(kPerhapsNotThere);
      break;
    case 4:
      pair.empty();
      break;
    default:
      break;
  }
}

}  // namespace

void tryInput(Input input) {
  const Bytes choices = input.bytes(kPieces + 1);
  const Bytes lengths = input.bytes(kPieces);
  Bytes received;
  AssemblerPair pair;
  std::size_t place = 0;
  for (const Bytes& piece : inPieces(input.rest(), lengths)) {
    received.insert(received.end(), piece.begin(), piece.end());
    pair.update(0, received);
    const unsigned int choice = place < choices.size() ? choices[place] : 0;
    ++place;
    takeSome(pair, choice % 16);
    takeSome(pair, choice / 16);
  }
  while (!pair.isEmpty()) {
    pair.takeOldest();
  }
  check(pair.takeOldest().empty(), "nothing is left");
  pair.resetCounters();
}

}  // namespace orb::test
