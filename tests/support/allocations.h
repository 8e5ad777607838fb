#pragma once

#include <cstddef>

// The program's operator new and delete, as those of every library it loads, with the means to see
// and to disturb them. Link `orb-test-allocations`. One thread at a time.

namespace orb::test {

/// How many blocks operator new has handed out that operator delete has not taken back.
long liveAllocations();

/// While it exists, allocation `number` fails with std::bad_alloc, 1 being the next; if it is to be
/// so, all later ones do as well.
class FailingAllocation {
 public:
  enum class Later { kSucceed, kFail };

  explicit FailingAllocation(int number, Later later = Later::kSucceed);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();

  /// Whether so many were asked for.
  bool hasHappened() const;
};

/// While it exists, allocations neither fail nor are counted by a FailingAllocation.
class UndisturbedAllocations {
 public:
  UndisturbedAllocations();
  UndisturbedAllocations(const UndisturbedAllocations&) = delete;
  UndisturbedAllocations& operator=(const UndisturbedAllocations&) = delete;
  ~UndisturbedAllocations();
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
