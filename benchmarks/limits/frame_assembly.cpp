#include "limits/frame_assembly.h"

#include <cstdlib>
#include <cstring>

#include "limits/exclusive_or.h"

namespace orb::bench {

namespace {

constexpr unsigned long kOverhead = 7;

Frame* keep(const unsigned char* packet, unsigned long length, Frame* next) {
  auto* const frame = static_cast<Frame*>(std::malloc(sizeof(Frame)));
  auto* const copy = static_cast<unsigned char*>(std::malloc(length));
  std::memcpy(copy, packet, length);
  *frame = {next, copy, length};
  return frame;
}

}  // namespace

Frame* assembleFrames(const unsigned char* bytes, unsigned long length, Frame* list) {
  const unsigned char* const end = bytes + length;
  while (end - bytes >= static_cast<long>(kOverhead)) {
    if (bytes[0] != 0xA0) {
      const void* found = std::memchr(bytes, 0xA0, static_cast<unsigned long>(end - bytes));
      bytes = found != nullptr ? static_cast<const unsigned char*>(found) : end;
      continue;
    }
    const unsigned long payload = static_cast<unsigned long>(bytes[2] << 8 | bytes[3]);
    if (bytes[1] != 0xA1) {
      ++bytes;
    } else if (static_cast<unsigned long>(end - bytes) < payload + kOverhead) {
      break;
    } else {
      if (exclusiveOr(bytes + 4, payload) == bytes[4 + payload]) {
        list = keep(bytes, payload + kOverhead, list);
      }
      bytes += payload + kOverhead;
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
