#include "support/heap_watch.h"

#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>

// The C library's own allocator, under the names by which it can be reached behind a replacement.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}

namespace {

thread_local constinit bool watching = false;
thread_local constinit orb::bench::HeapUse heapUse;

long sizeOf(void* block) { return static_cast<long>(malloc_usable_size(block)); }

void* counted(void* block) {
  if (watching && block != nullptr) {
    ++heapUse.requests;
    heapUse.held += sizeOf(block);
    heapUse.peak = std::max(heapUse.peak, heapUse.held);
  }
  return block;
}

void countRelease(void* block) {
  if (watching && block != nullptr) {
    heapUse.held -= sizeOf(block);
  }
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) { return counted(__libc_malloc(size)); }

void* calloc(std::size_t number, std::size_t size) { return counted(__libc_calloc(number, size)); }

void* realloc(void* block, std::size_t size) {
  countRelease(block);
  return counted(__libc_realloc(block, size));
}

void free(void* block) {
  countRelease(block);
  __libc_free(block);
}
}

namespace orb::bench {

HeapWatch::HeapWatch() {
  heapUse = {};
  watching = true;
}
HeapWatch::~HeapWatch() { watching = false; }

HeapUse HeapWatch::use() const { return heapUse; }

}  // namespace orb::bench
