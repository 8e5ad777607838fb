// What one query needs of the heap.

#include <stdexcept>
#include <string>
#include <vector>

#include "line/far_end.h"
#include "line/query.h"
#include "orb-gnss/module_driver.h"
#include "orb-sim/path_map.h"
#include "support/heap_watch.h"
#include "support/work.h"

namespace {

using orb::bench::FarEnd;
using orb::bench::HeapUse;
using orb::bench::Row;

constexpr double kReplyTimeoutSeconds = 5;
constexpr double kBufferBytesPerSecond = 1024;

void query(orbController_QN4470T01& driver) {
  unsigned int mode = 0;
  unsigned int elevation = 0;
  unsigned int cnr = 0;
  if (driver.gpsOrbGetElevConfigure(mode, elevation, cnr) != 0) {
    throw std::runtime_error("the query was not answered");
  }
}

HeapUse useOfQuery(orbController_QN4470T01& driver) {
  const orb::bench::HeapWatch heap;
  query(driver);
  return heap.use();
}

std::vector<Row> oneQuery() {
  FarEnd farEnd({{orb::bench::kStartByte, orb::bench::kMasksReply}});
  orb::sim::mapPath("/dev/tty_gps", farEnd.tty());
  orb::sim::mapPath("/var/log/orbset-errors.log", "/dev/null");
  orbController_QN4470T01 driver;
  query(driver);  // What allocates at its first use has done so now.

  const HeapUse use = useOfQuery(driver);
  return {Row{.work = "heap-peak",
              .title = "peak heap of one query",
              .unit = "bytes",
              .value = static_cast<double>(use.peak),
              .bound = kReplyTimeoutSeconds * kBufferBytesPerSecond + 8192,
              .note = std::to_string(use.requests) + " allocations"},
          Row{.work = "heap-kept",
              .title = "heap kept after it",
              .unit = "bytes",
              .value = static_cast<double>(use.held),
              .bound = 0}};
}

const orb::bench::Work kWorks[] = {{"heap", oneQuery}};

}  // namespace

int main(int argc, char** argv) { return orb::bench::runWorks(argc, argv, kWorks); }
