#include "support/heap_watch.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

// The C library's own allocator, under the names by which it can be reached behind a replacement.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}

namespace {

struct Count {
  bool on = false;
  long held = 0;
  long peak = 0;
  long requests = 0;
};

thread_local constinit Count count;

long sizeOf(void* block) { return static_cast<long>(malloc_usable_size(block)); }

void* counted(void* block) {
  if (count.on && block != nullptr) {
    ++count.requests;
    count.held += sizeOf(block);
    count.peak = std::max(count.peak, count.held);
  }
  return block;
}

void countRelease(void* block) {
  if (count.on && block != nullptr) {
    count.held -= sizeOf(block);
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

HeapWatch::HeapWatch() { count = {.on = true}; }
HeapWatch::~HeapWatch() { count.on = false; }

long HeapWatch::peak() const { return count.peak; }
long HeapWatch::kept() const { return count.held; }
long HeapWatch::requests() const { return count.requests; }

}  // namespace orb::bench
