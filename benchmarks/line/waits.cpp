// What waiting costs: latency that it adds to the far end's delay, and processor time.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>

#include "base/owned_descriptor.h"
#include "line/far_end.h"
#include "line/query.h"
#include "support/turns.h"
#include "transport/look_schedule.h"

namespace orb::bench {

namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using namespace std::chrono_literals;

// Lets the time between two looks at the line pass.
using Pause = std::function<void()>;

// A way to wait for a reply.
struct Policy {
  std::string name;
  /// Called for each reply that is waited for.
  std::function<Pause()> begin;
};

void sleepFor(nanoseconds duration) {
  const timespec request{0, static_cast<long>(duration.count())};
  clock_nanosleep(CLOCK_MONOTONIC, 0, &request, nullptr);
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

const Policy kSpinning{"spin", [] { return [] {}; }};
const Policy kShipped{
    "shipped",
    [] { return [schedule = LookSchedule()]() mutable { schedule.waitForNextLook(); }; }};

// What waits with one delay came to.
struct WaitCost {
  double addedMilliseconds = 0;   ///< the median
  double processorShare = 0;      ///< percent of the time from query to answer
  std::vector<double> samples{};  ///< the single waits' added milliseconds
};

// Has the far end answer `queries` queries after `delay`, spread uniformly by 20 % to either side
// so that nothing can be tuned to it. `receive` waits for the answer to a query that was sent.
template <typename Send, typename Receive>
WaitCost costOf(FarEnd& farEnd, milliseconds delay, int queries, Send&& send, Receive&& receive) {
  std::mt19937 random(std::random_device{}());
  std::uniform_real_distribution<> spread(0.8, 1.2);
  WaitCost cost;
  double processor = 0;
  double waited = 0;
  for (int query = 0; query < queries; ++query) {
    const auto chosen = std::chrono::duration_cast<nanoseconds>(delay * spread(random));
    farEnd.answerAfter(chosen);
    const auto sent = FarEnd::Clock::now();
    send();
    processor += timePerCall(receive, 1);
    const auto received = FarEnd::Clock::now();
    if (received - sent < chosen) {
      throw std::runtime_error("an answer came earlier than it was to");
    }
    const std::chrono::duration<double, std::milli> late = received - farEnd.answeredAt();
    cost.samples.push_back(late.count());
    waited += std::chrono::duration<double, std::nano>(received - sent).count();
  }
  cost.addedMilliseconds = median(cost.samples);
  cost.processorShare = 100 * processor / waited;
  return cost;
}

WaitCost costOfLibrary(FarEnd& farEnd, milliseconds delay, int queries) {
  std::unique_ptr<LibraryQuery> query;
  const auto send = [&] {
    query = std::make_unique<LibraryQuery>(farEnd.tty());
    query->send();
  };
  return costOf(farEnd, delay, queries, send, [&] { query->receive(); });
}

// On a line that stays open.
WaitCost costOfPolicy(FarEnd& farEnd, const Policy& policy, milliseconds delay, int queries) {
  const std::string& tty = farEnd.tty();
  const OwnedDescriptor line(open(tty.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC), tty);
  const auto send = [&] {
    if (write(line.get(), kMasksQuery.data(), kMasksQuery.size()) < 0) {
      throw std::runtime_error("the line took no query");
    }
  };
  const auto receive = [&] {
    const Pause pause = policy.begin();
    unsigned char reply[1024];
    for (unsigned long received = 0; received < kMasksReply.size();) {
      const ssize_t count = read(line.get(), reply + received, sizeof reply - received);
      if (count > 0) {
        received += static_cast<unsigned long>(count);
      } else {
        pause();
      }
    }
  };
  return costOf(farEnd, delay, queries, send, receive);
}

struct Delay {
  milliseconds delay;
  int queries;
  double mostAdded = 0;
  std::optional<double> mostShare{};
};

std::vector<Row> delayedQuery() {
  constexpr Delay kDelays[] = {
      {3ms, 200, 0.5, std::nullopt}, {20ms, 80, 1.2, 5}, {100ms, 100, 3, 3}};
  constexpr int kSpinningQueries = 21;

  FarEnd farEnd({{kStartByte, kMasksReply}});
  std::vector<Row> rows;
  for (const Delay& delay : kDelays) {
    const std::string name = std::to_string(delay.delay.count()) + "ms";
    const WaitCost cost = costOfLibrary(farEnd, delay.delay, delay.queries);
    const WaitCost spinning = costOfPolicy(farEnd, kSpinning, delay.delay, kSpinningQueries);
    rows.push_back({.work = "delayed-" + name + "-added",
                    .title = "query answered after " + name + ", added at p50",
                    .unit = "ms",
                    .value = cost.addedMilliseconds,
                    .limit = spinning.addedMilliseconds,
                    .bound = delay.mostAdded,
                    .samples = cost.samples});
    rows.push_back({.work = "delayed-" + name + "-processor",
                    .title = "query answered after " + name + ", processor",
                    .unit = "% of wait",
                    .value = cost.processorShare,
                    .limit = spinning.processorShare,
                    .bound = delay.mostShare});
  }
  return rows;
}

std::vector<Row> waitPolicies() {
  constexpr Delay kDelays[] = {{3ms, 40}, {20ms, 30}, {100ms, 15}, {1000ms, 3}};
  const Policy policies[] = {kSpinning,         fixed("1ms", 1ms), fixed("4ms", 4ms),
                             share("1/16", 16), share("1/8", 8),   share("1/4", 4),
                             kShipped};

  FarEnd farEnd({{kStartByte, kMasksReply}});
  std::vector<Row> rows;
  for (const Policy& policy : policies) {
    Series series{.x = "processor, % of wait", .y = "added at p50, ms", .points = {}};
    for (const Delay& delay : kDelays) {
      const WaitCost cost = costOfPolicy(farEnd, policy, delay.delay, delay.queries);
      series.points.emplace_back(cost.processorShare, cost.addedMilliseconds);
    }
    rows.push_back({.work = "wait-" + policy.name,
                    .title = "wait policy " + policy.name + ", 20 ms, processor",
                    .unit = "% of wait",
                    .value = series.points[1].first,
                    .series = series,
                    .note = "added " + std::to_string(series.points[1].second) + " ms"});
  }
  return rows;
}

const Work kWorks[] = {{"delayed", delayedQuery}, {"wait", waitPolicies}};

}  // namespace

}  // namespace orb::bench

int main(int argc, char** argv) { return orb::bench::run(argc, argv, orb::bench::kWorks); }
