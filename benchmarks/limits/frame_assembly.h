#pragma once

namespace orb::bench {

/// A message as the limit keeps it.
struct Frame {
  Frame* next;
  unsigned char* packet;
  unsigned long length;
};

/// The least that cutting bytes into messages can cost: scan, checksum, and for each good frame two
/// allocations and one copy. Newest first.
Frame* assembleFrames(const unsigned char* bytes, unsigned long length);

/// Releases them all.
void releaseFrames(Frame* list);

}  // namespace orb::bench
