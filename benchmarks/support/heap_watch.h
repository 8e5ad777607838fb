#pragma once

namespace orb::bench {

/// What a piece of work asked of the heap, in bytes that malloc has set aside.
struct HeapUse {
  long peak = 0;      ///< the most that was held at a time
  long held = 0;      ///< what was allocated and is still held
  long requests = 0;  ///< how often memory was asked for
};

/// Counts what the calling thread allocates while the object lives. Replaces malloc and its kin in
/// the program that links it. One at a time.
class HeapWatch {
 public:
  HeapWatch();
  HeapWatch(const HeapWatch&) = delete;
  HeapWatch& operator=(const HeapWatch&) = delete;
  ~HeapWatch();

  /// What was used so far.
  HeapUse use() const;
};

}  // namespace orb::bench
