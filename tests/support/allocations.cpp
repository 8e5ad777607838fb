#include "support/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> liveBlocks{0};
std::atomic<bool> failing{false};
std::atomic<bool> undisturbed{false};
std::atomic<int> allocationsUntilFailure{0};
std::atomic<bool> laterFail{false};

std::atomic<bool> noting{false};
std::size_t notedCount = 0;
const void* noted[orb::test::ReleasedBlocks::kCapacity];

bool failsNow() {
  if (!failing || undisturbed) {
    return false;
  }
  const int left = --allocationsUntilFailure;
  return left == 0 || (left < 0 && laterFail);
}

void* allocate(std::size_t size) {
  if (failsNow()) {
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

FailingAllocation::FailingAllocation(int number, Later later) {
  allocationsUntilFailure = number;
  laterFail = later == Later::kFail;
  failing = true;
}
FailingAllocation::~FailingAllocation() { failing = false; }

bool FailingAllocation::hasHappened() const { return allocationsUntilFailure <= 0; }

UndisturbedAllocations::UndisturbedAllocations() { undisturbed = true; }
UndisturbedAllocations::~UndisturbedAllocations() { undisturbed = false; }

ReleasedBlocks::ReleasedBlocks() {
  notedCount = 0;
  noting = true;
}
ReleasedBlocks::~ReleasedBlocks() { noting = false; }

std::size_t ReleasedBlocks::count() const { return notedCount; }
const void* ReleasedBlocks::operator[](std::size_t index) const { return noted[index]; }

}  // namespace orb::test
