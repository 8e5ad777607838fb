#include "support/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> liveBlocks{0};
std::atomic<int> allocationsUntilFailure{0};  // 0: none is to fail

std::atomic<bool> noting{false};
std::size_t notedCount = 0;
const void* noted[orb::test::ReleasedBlocks::kCapacity];

void* allocate(std::size_t size) {
  if (allocationsUntilFailure > 0 && --allocationsUntilFailure == 0) {
    throw std::bad_alloc();
  }
  void* const block = std::malloc(size > 0 ? size : 1);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  ++liveBlocks;
  return block;
}

void release(void* block) {
  if (block == nullptr) {
    return;
  }
  if (noting && notedCount < orb::test::ReleasedBlocks::kCapacity) {
    noted[notedCount++] = block;
  }
  --liveBlocks;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t) noexcept { release(block); }

namespace orb::test {

long liveAllocations() { return liveBlocks; }

FailingAllocation::FailingAllocation(int number) { allocationsUntilFailure = number; }
FailingAllocation::~FailingAllocation() { allocationsUntilFailure = 0; }

ReleasedBlocks::ReleasedBlocks() {
  notedCount = 0;
  noting = true;
}
ReleasedBlocks::~ReleasedBlocks() { noting = false; }

std::size_t ReleasedBlocks::count() const { return notedCount; }
const void* ReleasedBlocks::operator[](std::size_t index) const { return noted[index]; }

}  // namespace orb::test
