// What one query needs of the heap. The program replaces malloc and its kin.

#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "line/far_end.h"
#include "line/query.h"
#include "orb-gnss/module_driver.h"
#include "orb-sim/path_map.h"
#include "support/work.h"

namespace {

// In bytes that malloc has set aside.
struct HeapUse {
  long peak = 0;
  long held = 0;
  long requests = 0;
};

// Only this thread's allocations count: the far end is in the same program.
thread_local constinit bool watching = false;
thread_local constinit HeapUse heapUse;

void* counted(void* block) {
  if (watching && block != nullptr) {
    ++heapUse.requests;
    heapUse.held += static_cast<long>(malloc_usable_size(block));
    heapUse.peak = std::max(heapUse.peak, heapUse.held);
  }
  return block;
}

void countRelease(void* block) {
  if (watching && block != nullptr) {
    heapUse.held -= static_cast<long>(malloc_usable_size(block));
  }
}

}  // namespace

extern "C" {

// The C library's own allocator, under the names by which a replacement can reach it.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) { return counted(__libc_malloc(size)); }

void* calloc(std::size_t count, std::size_t size) { return counted(__libc_calloc(count, size)); }

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

namespace {

void query(orbController_QN4470T01& driver) {
  unsigned int mode = 0;
  unsigned int elevation = 0;
  unsigned int cnr = 0;
  if (driver.gpsOrbGetElevConfigure(mode, elevation, cnr) != 0) {
    throw std::runtime_error("the query was not answered");
  }
}

std::vector<Row> oneQuery() {
  constexpr double kReceiveBuffer = 5 * 1024;
  constexpr double kMostBesides = 8192;
  FarEnd farEnd({{kStartByte, kMasksReply}});
  sim::mapPath("/dev/tty_gps", farEnd.tty());
  sim::mapPath("/var/log/orbset-errors.log", "/dev/null");
  orbController_QN4470T01 driver;
  query(driver);  // What allocates at its first use has done so now.

  watching = true;
  query(driver);
  watching = false;
  return {{.work = "heap-peak",
           .title = "peak heap of one query",
           .unit = "bytes",
           .value = static_cast<double>(heapUse.peak),
           .bound = kReceiveBuffer + kMostBesides,
           .note = std::to_string(heapUse.requests) + " allocations"},
          {.work = "heap-kept",
           .title = "heap kept after it",
           .unit = "bytes",
           .value = static_cast<double>(heapUse.held),
           .bound = 0}};
}

const Work kWorks[] = {{"heap", oneQuery}};

}  // namespace

}  // namespace orb::bench

int main(int argc, char** argv) { return orb::bench::run(argc, argv, orb::bench::kWorks); }
