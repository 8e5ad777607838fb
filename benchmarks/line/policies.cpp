#include "line/policies.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <memory>
#include <stdexcept>

#include "line/query.h"
#include "transport/look_schedule.h"

namespace orb::bench {

namespace {

using std::chrono::nanoseconds;
using namespace std::chrono_literals;

void sleepFor(nanoseconds duration) {
  const timespec request{0, static_cast<long>(duration.count())};
  clock_nanosleep(CLOCK_MONOTONIC, 0, &request, nullptr);
}

Policy spinning() {
  return {"spin", [] { return [] {}; }};
}

Policy fixed(const std::string& name, nanoseconds duration) {
  return {name, [duration] { return [duration] { sleepFor(duration); }; }};
}

// Sleeps for this part of the time slept so far, within limits.
Policy share(const std::string& name, int part) {
  return {name, [part] {
            return [part, slept = nanoseconds::zero()]() mutable {
              const auto duration = std::clamp<nanoseconds>(slept / part, 50us, 12ms);
              sleepFor(duration);
              slept += duration;
            };
          }};
}

Policy shipped() {
  return {"shipped", [] { return [schedule = LookSchedule()]() mutable { schedule.waitForNextLook(); }; }};
}

}  // namespace

const std::vector<Policy>& policies() {
  static const std::vector<Policy> all{spinning(),        fixed("1ms", 1ms), fixed("4ms", 4ms),
                                       share("1/16", 16), share("1/8", 8),   share("1/4", 4),
                                       shipped()};
  return all;
}

PolicyQuery::PolicyQuery(const std::string& tty)
    : tty_(open(tty.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC), tty) {}

void PolicyQuery::send() {
  if (write(tty_.get(), kMasksQuery.data(), kMasksQuery.size()) < 0) {
    throw std::runtime_error("the line took no query");
  }
}

void PolicyQuery::receive(const Pause& pause) {
  unsigned char reply[1024];
  for (unsigned long received = 0; received < kMasksReply.size();) {
    const ssize_t count = read(tty_.get(), reply + received, sizeof reply - received);
    if (count > 0) {
      received += static_cast<unsigned long>(count);
    } else {
      pause();
    }
  }
}

}  // namespace orb::bench
