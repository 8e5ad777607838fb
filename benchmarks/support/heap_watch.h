#pragma once

#include <cstddef>

namespace orb::bench {

/// Counts what the calling thread allocates while the object lives, in bytes that malloc has set
/// aside. Replaces malloc and its kin in the program that links it. One at a time.
class HeapWatch {
 public:
  HeapWatch();
  HeapWatch(const HeapWatch&) = delete;
  HeapWatch& operator=(const HeapWatch&) = delete;
  ~HeapWatch();

  /// The most that was held at a time.
  long peak() const;
  /// What is held now of what was allocated since.
  long kept() const;
  /// How often memory was asked for.
  long requests() const;
};

}  // namespace orb::bench
