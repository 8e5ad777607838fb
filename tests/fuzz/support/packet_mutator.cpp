// Changes inputs as the fuzzer does, and then, three times out of four, makes the checksums and end
// bytes of the packets in them right: at random, hardly a packet with a new body would be taken.
// Targets whose inputs hold packets link this file.

#include <cstddef>
#include <cstdint>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t room);

namespace {

constexpr std::size_t kOverhead = 7;

void repairPackets(std::uint8_t* data, std::size_t size) {
  std::size_t at = 0;
  while (at + kOverhead <= size) {
    std::uint8_t* const packet = data + at;
    const std::size_t length = packet[2] * 256U + packet[3];
    if (packet[0] != 0xA0 || packet[1] != 0xA1 || at + kOverhead + length > size) {
      ++at;
      continue;
    }
    std::uint8_t* const trailer = packet + 4 + length;
    trailer[0] = 0;
    for (const std::uint8_t* byte = packet + 4; byte != trailer; ++byte) {
      trailer[0] = static_cast<std::uint8_t>(trailer[0] ^ *byte);
    }
    trailer[1] = 0x0D;
    trailer[2] = 0x0A;
    at += kOverhead + length;
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t room, unsigned int seed) {
  const std::size_t changed = LLVMFuzzerMutate(data, size, room);
  if (seed % 4 != 0) {
    repairPackets(data, changed);
  }
  return changed;
}
