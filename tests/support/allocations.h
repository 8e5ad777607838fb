#pragma once

#include <cstddef>

// The program's operator new and delete, as those of every library it loads, with the means to see
// and to disturb them. Link `orb-test-allocations`. One thread at a time.

namespace orb::test {

/// How many blocks operator new has handed out that operator delete has not taken back.
long liveAllocations();

/// While it exists, allocation `number` fails with std::bad_alloc, 1 being the next.
class FailingAllocation {
 public:
  explicit FailingAllocation(int number);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();
};

/// While it exists, notes the first blocks that are released, in order.
class ReleasedBlocks {
 public:
  static constexpr std::size_t kCapacity = 64;

  ReleasedBlocks();
  ReleasedBlocks(const ReleasedBlocks&) = delete;
  ReleasedBlocks& operator=(const ReleasedBlocks&) = delete;
  ~ReleasedBlocks();

  std::size_t count() const;
  const void* operator[](std::size_t index) const;
};

}  // namespace orb::test
