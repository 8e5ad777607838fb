// What waiting costs: latency that it adds to the far end's delay, and processor time.

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "line/far_end.h"
#include "line/policies.h"
#include "line/query.h"
#include "line/wait_cost.h"
#include "support/turns.h"
#include "support/work.h"

namespace {

using orb::bench::FarEnd;
using orb::bench::Row;
using orb::bench::Series;
using orb::bench::WaitCost;
using std::chrono::milliseconds;

WaitCost costOfLibrary(FarEnd& farEnd, milliseconds delay, int queries) {
  std::unique_ptr<orb::bench::LibraryQuery> query;
  return orb::bench::costOf(
      farEnd, delay, queries,
      [&] {
        query = std::make_unique<orb::bench::LibraryQuery>(farEnd.tty());
        query->send();
      },
      [&] { query->receive(); });
}

WaitCost costOfPolicy(FarEnd& farEnd, const orb::bench::Policy& policy, milliseconds delay,
                      int queries) {
  orb::bench::PolicyQuery query(farEnd.tty());
  return orb::bench::costOf(
      farEnd, delay, queries, [&] { query.send(); }, [&] { query.receive(policy.begin()); });
}

std::vector<Row> delayedQuery() {
  struct Delay {
    milliseconds delay;
    int queries;
    double mostAdded;
    std::optional<double> mostShare;
  };
  constexpr Delay kDelays[] = {{milliseconds(3), 200, 0.5, std::nullopt},
                               {milliseconds(20), 80, 1.2, 5},
                               {milliseconds(100), 100, 3, 3}};
  constexpr int kSpinningQueries = 21;

  FarEnd farEnd({{orb::bench::kStartByte, orb::bench::kMasksReply}});
  std::vector<Row> rows;
  for (const Delay& delay : kDelays) {
    const std::string name = std::to_string(delay.delay.count()) + "ms";
    const WaitCost cost = costOfLibrary(farEnd, delay.delay, delay.queries);
    const WaitCost spinning =
        costOfPolicy(farEnd, orb::bench::policies().front(), delay.delay, kSpinningQueries);
    rows.push_back({.work = "delayed-" + name + "-added",
                    .title = "query answered after " + name + ", added at p50",
                    .unit = "ms",
                    .value = orb::bench::median(cost.addedMilliseconds),
                    .limit = orb::bench::median(spinning.addedMilliseconds),
                    .bound = delay.mostAdded,
                    .samples = cost.addedMilliseconds});
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
  struct Delay {
    milliseconds delay;
    int queries;
  };
  constexpr Delay kDelays[] = {{milliseconds(3), 40},
                               {milliseconds(20), 30},
                               {milliseconds(100), 15},
                               {milliseconds(1000), 3}};

  FarEnd farEnd({{orb::bench::kStartByte, orb::bench::kMasksReply}});
  std::vector<Row> rows;
  for (const orb::bench::Policy& policy : orb::bench::policies()) {
    Series series{.x = "processor, % of wait", .y = "added at p50, ms", .points = {}};
    for (const Delay& delay : kDelays) {
      const WaitCost cost = costOfPolicy(farEnd, policy, delay.delay, delay.queries);
      series.points.emplace_back(cost.processorShare, orb::bench::median(cost.addedMilliseconds));
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

const orb::bench::Work kWorks[] = {{"delayed", delayedQuery}, {"wait", waitPolicies}};

}  // namespace

int main(int argc, char** argv) { return orb::bench::runWorks(argc, argv, kWorks); }
