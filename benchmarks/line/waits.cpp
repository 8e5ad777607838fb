// What waiting costs: latency that it adds to the far end's delay, and processor time.

#include <iostream>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "line/far_end.h"
#include "line/latency.h"
#include "line/policies.h"
#include "line/query.h"
#include "line/text_feed.h"
#include "orb-gnss/serial_channel.h"
#include "support/turns.h"
#include "support/work.h"

namespace {

using orb::bench::FarEnd;
using orb::bench::Row;
using orb::bench::Series;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

/// What waits with one delay came to.
struct Cost {
  std::vector<double> addedMilliseconds;
  double processorShare = 0;  ///< percent of the time from query to answer
};

/// Has the far end answer `queries` queries after `delay`, spread uniformly by 20 % to either side
/// so that nothing can be tuned to it. `receive` waits for the answer to a query that was sent.
template <typename Send, typename Receive>
Cost costOf(FarEnd& farEnd, milliseconds delay, int queries, Send&& send, Receive&& receive) {
  std::mt19937 random(1);
  std::uniform_real_distribution<> spread(0.8, 1.2);
  Cost cost;
  double processor = 0;
  double waited = 0;
  for (int query = 0; query < queries; ++query) {
    const auto chosen = std::chrono::duration_cast<nanoseconds>(delay * spread(random));
    farEnd.answerAfter(chosen);
    send();
    const double start = orb::bench::threadNanoseconds();
    receive();
    processor += orb::bench::threadNanoseconds() - start;
    const auto late = FarEnd::Clock::now() - farEnd.answeredAt();
    cost.addedMilliseconds.push_back(std::chrono::duration<double, std::milli>(late).count());
    waited += static_cast<double>(chosen.count());
  }
  cost.processorShare = 100 * processor / waited;
  return cost;
}

Cost costOfLibrary(FarEnd& farEnd, milliseconds delay, int queries) {
  std::unique_ptr<orb::bench::LibraryQuery> query;
  return costOf(
      farEnd, delay, queries,
      [&] {
        query = std::make_unique<orb::bench::LibraryQuery>(farEnd.tty());
        query->send();
      },
      [&] { query->receive(); });
}

Cost costOfPolicy(FarEnd& farEnd, const orb::bench::Policy& policy, milliseconds delay,
                  int queries) {
  orb::bench::PolicyQuery query(farEnd.tty());
  return costOf(
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
                               {milliseconds(100), 40, 3, 3}};
  constexpr int kSpinningQueries = 5;

  FarEnd farEnd({{0xA0, orb::bench::kMasksReply}});
  std::vector<Row> rows;
  for (const Delay& delay : kDelays) {
    const std::string name = std::to_string(delay.delay.count()) + "ms";
    const Cost cost = costOfLibrary(farEnd, delay.delay, delay.queries);
    const Cost spinning =
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

double realNanoseconds() {
  return static_cast<double>(FarEnd::Clock::now().time_since_epoch().count());
}

std::vector<Row> silentLine() {
  constexpr milliseconds kSilence(5000);
  FarEnd farEnd({{0xA0, orb::bench::kMasksReply}});
  farEnd.answerAfter(kSilence);
  orb::bench::LibraryQuery query(farEnd.tty());
  query.send();
  const double start = realNanoseconds();
  const double processorStart = orb::bench::threadNanoseconds();
  query.receive();
  const double processor = orb::bench::threadNanoseconds() - processorStart;
  return {{.work = "silence",
           .title = "a line that stays silent for 5 s, processor",
           .unit = "% of core",
           .value = 100 * processor / (realNanoseconds() - start),
           .bound = 0.5}};
}

/// While it exists, nobody says on std::cerr that a time-out has passed.
class Quiet {
 public:
  Quiet() : buffer_(std::cerr.rdbuf(nullptr)) {}
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;
  ~Quiet() {
    std::cerr.rdbuf(buffer_);  // which also clears the error that writing to nothing has set
  }

 private:
  std::streambuf* buffer_;
};

std::vector<Row> timeoutUnderText() {
  constexpr ORBMessageMsgValue kMasks = 0xB000;
  constexpr int kTimeoutSeconds = 5;
  const Quiet quiet;
  const orb::bench::TextFeed feed;
  orbIO channel(feed.tty());
  const double start = realNanoseconds();
  const double processorStart = orb::bench::threadNanoseconds();
  const std::unique_ptr<ORBMessage> reply(channel.ReceiveMessage(kMasks, kTimeoutSeconds));
  const double processor = orb::bench::threadNanoseconds() - processorStart;
  if (reply != nullptr) {
    throw std::runtime_error("text was taken for a reply");
  }
  return {{.work = "text",
           .title = "a 5 s time-out under 11520 bytes/s of text, processor",
           .unit = "% of core",
           .value = 100 * processor / (realNanoseconds() - start),
           .bound = 1,
           .note = "kernel included"}};
}

std::vector<Row> waitPolicies() {
  struct Delay {
    milliseconds delay;
    int queries;
  };
  constexpr Delay kDelays[] = {
      {milliseconds(3), 40}, {milliseconds(20), 30}, {milliseconds(100), 15}};

  FarEnd farEnd({{0xA0, orb::bench::kMasksReply}});
  std::vector<Row> rows;
  for (const orb::bench::Policy& policy : orb::bench::policies()) {
    Series series{"processor, % of wait", "added at p50, ms", {}};
    for (const Delay& delay : kDelays) {
      const Cost cost = costOfPolicy(farEnd, policy, delay.delay, delay.queries);
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

const orb::bench::Work kWorks[] = {{"delayed", delayedQuery},
                                   {"silence", silentLine},
                                   {"text", timeoutUnderText},
                                   {"wait", waitPolicies}};

}  // namespace

int main(int argc, char** argv) { return orb::bench::runWorks(argc, argv, kWorks); }
