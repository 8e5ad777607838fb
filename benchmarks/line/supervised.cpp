// What a call through a supervised controller costs beyond the direct one: the way to the worker
// and back, and the lock.

#include "orb-gnss/supervised_controller.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "line/far_end.h"
#include "line/query.h"
#include "orb-gnss/module_driver.h"
#include "orb-sim/path_map.h"
#include "support/turns.h"

namespace orb::bench {

namespace {

constexpr int kPairs = 3001;
constexpr double kMicrosecond = 1000;

void expect(bool isRight) {
  if (!isRight) {
    throw std::runtime_error("a query was not answered as it should be");
  }
}

// For this process and for the worker, which is another one.
void mapDevice(const std::string& tty) {
  sim::mapPath("/dev/tty_gps", tty);
  sim::mapPath("/var/log/orbset-errors.log", "/dev/null");
  sim::mapPath("/run/lock/LCK..tty_gps", ORB_BENCH_LOCK);
  ::setenv("LD_PRELOAD", ORB_PRELOAD_LIBRARY, 1);
  ::setenv("ORB_SIM_PATHS",
           ("/dev/tty_gps=" + tty + ":/var/log/orbset-errors.log=/dev/null").c_str(), 1);
}

std::vector<Row> supervised() {
  const FarEnd farEnd({{kStartByte, kMasksReply}});
  mapDevice(farEnd.tty());
  orbController_QN4470T01 driver;
  const auto query = [&] {
    unsigned int mode = 0;
    unsigned int elevation = 0;
    unsigned int cnr = 0;
    expect(driver.gpsOrbGetElevConfigure(mode, elevation, cnr) == 0 && elevation == 5);
  };
  orbSupervisedController controller;
  const auto supervisedQuery = [&] {
    std::vector<orbSupervisedController::Value> masks = {0LL, 0LL, 0LL};
    const auto result = controller.call("gpsOrbGetElevConfigure", masks);
    expect(std::get<long long>(result) == 0 && std::get<long long>(masks[1]) == 5);
  };
  const Turn middle =
      quantile(takeTimedTurns([&] { return timePerCall(supervisedQuery, 1, realNanoseconds); },
                              [&] { return timePerCall(query, 1, realNanoseconds); }, kPairs),
               0.5);
  return {{.work = "supervised-p50",
           .title = "supervised call, beyond the direct query, p50",
           .unit = "us",
           .value = (middle.work - middle.limit) / kMicrosecond,
           .bound = 60}};
}

const Work kWorks[] = {{"supervised", supervised}};

}  // namespace

}  // namespace orb::bench

int main(int argc, char** argv) { return orb::bench::run(argc, argv, orb::bench::kWorks); }
