#include "limits/frame_assembly.h"

#include <cstdlib>
#include <cstring>

#include "limits/copy_packet.h"

namespace orb::bench {

static Frame* keep(const unsigned char* packet, unsigned long payload, Frame* next) {
  auto* const frame = static_cast<Frame*>(std::malloc(sizeof(Frame)));
  auto* const copy = static_cast<unsigned char*>(std::malloc(payload + 7));
  *frame = {next, copy, payload + 7};
  if (copyPacket(packet, copy, payload)) return frame;
  std::free(copy);
  std::free(frame);
  return next;
}

Frame* assembleFrames(const unsigned char* bytes, unsigned long length, Frame* list) {
  for (unsigned long at = 0; at + 6 < length;) {
    const unsigned char* const packet = bytes + at;
    if (packet[0] != 0xA0) {
      const void* found = std::memchr(packet, 0xA0, length - at);
      at = found != nullptr ? static_cast<const unsigned char*>(found) - bytes : length;
    } else if (packet[1] != 0xA1) {
      ++at;
    } else {
      const auto payload = static_cast<unsigned long>(packet[2] << 8 | packet[3]);
      if (at + payload + 5 >= length) break;
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
