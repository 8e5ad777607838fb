#include "limits/frame_assembly.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace orb::bench {

namespace {

// Copies a word, moves on by its length and returns it.
template <typename Word>
std::uint64_t copyWord(const unsigned char*& from, unsigned char*& to) {
  Word word;
  std::memcpy(&word, from, sizeof word);
  std::memcpy(to, &word, sizeof word);
  from += sizeof word;
  to += sizeof word;
  return word;
}

// The same where `left` has the bit of the word's size; else 0.
template <typename Word>
std::uint64_t copyIf(unsigned long left, const unsigned char*& from, unsigned char*& to) {
  return (left & sizeof(Word)) != 0 ? copyWord<Word>(from, to) : 0;
}

// Copies a packet with `length` bytes of payload, its end bytes aside, which are written anew, and
// in the same pass takes the exclusive-or. Returns whether the checksum is right.
bool copyPacket(const unsigned char* from, unsigned char* to, unsigned long length) {
  std::memcpy(to + length + 5, "\x0D\x0A", 2);
  copyWord<std::uint32_t>(from, to);
  unsigned long left = length + 1;
  std::uint64_t even = 0, odd = 0;
  for (; left >= 16; left -= 16) {
    even ^= copyWord<std::uint64_t>(from, to);
    odd ^= copyWord<std::uint64_t>(from, to);
  }
  std::uint64_t word = even ^ odd;
  word ^= copyIf<std::uint64_t>(left, from, to);
  word ^= copyIf<std::uint32_t>(left, from, to);
  word ^= copyIf<std::uint16_t>(left, from, to);
  word ^= copyIf<std::uint8_t>(left, from, to);
  word ^= word >> 32;
  word ^= word >> 16;
  return static_cast<unsigned char>(word ^ word >> 8) == 0;
}

Frame* keep(const unsigned char* packet, unsigned long payload, Frame* next) {
  auto* const frame = static_cast<Frame*>(std::malloc(sizeof(Frame)));
  auto* const copy = static_cast<unsigned char*>(std::malloc(payload + 7));
  *frame = {next, copy, payload + 7};
  if (copyPacket(packet, copy, payload)) {
    return frame;
  }
  std::free(copy);
  std::free(frame);
  return next;
}

}  // namespace

Frame* assembleFrames(const unsigned char* bytes, unsigned long length) {
  Frame* list = nullptr;
  for (unsigned long at = 0; at + 6 < length;) {
    const unsigned char* const packet = bytes + at;
    if (packet[0] != 0xA0) {
      const void* found = std::memchr(packet, 0xA0, length - at);
      at = found != nullptr ? static_cast<const unsigned char*>(found) - bytes : length;
    } else if (packet[1] != 0xA1) {
      ++at;
    } else {
      const auto payload = static_cast<unsigned long>(packet[2] << 8 | packet[3]);
      if (at + payload + 5 >= length) {
        break;
      }
      list = keep(packet, payload, list);
      at += payload + 7;
    }
  }
  return list;
}

void releaseFrames(Frame* list) {
  while (list != nullptr) {
    Frame* const next = list->next;
    std::free(list->packet);
    std::free(list);
    list = next;
  }
}

}  // namespace orb::bench
