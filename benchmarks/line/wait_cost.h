#pragma once

#include <chrono>
#include <random>
#include <stdexcept>
#include <vector>

#include "line/far_end.h"
#include "support/turns.h"

namespace orb::bench {

/// What waits with one delay came to.
struct WaitCost {
  std::vector<double> addedMilliseconds;
  double processorShare = 0;  ///< percent of the time from query to answer
};

/// Has the far end answer `queries` queries after `delay`, spread uniformly by 20 % to either side
/// so that nothing can be tuned to it. `receive` waits for the answer to a query that was sent.
template <typename Send, typename Receive>
WaitCost costOf(FarEnd& farEnd, std::chrono::milliseconds delay, int queries, Send&& send,
                Receive&& receive) {
  std::mt19937 random(std::random_device{}());
  std::uniform_real_distribution<> spread(0.8, 1.2);
  WaitCost cost;
  double processor = 0;
  double waited = 0;
  for (int query = 0; query < queries; ++query) {
    const auto chosen =
        std::chrono::duration_cast<std::chrono::nanoseconds>(delay * spread(random));
    farEnd.answerAfter(chosen);
    const auto sent = FarEnd::Clock::now();
    send();
    const double start = threadNanoseconds();
    receive();
    processor += threadNanoseconds() - start;
    const auto received = FarEnd::Clock::now();
    if (received - sent < chosen) {
      throw std::runtime_error("an answer came earlier than it was to");
    }
    const std::chrono::duration<double, std::milli> late = received - farEnd.answeredAt();
    cost.addedMilliseconds.push_back(late.count());
    waited += std::chrono::duration<double, std::nano>(received - sent).count();
  }
  cost.processorShare = 100 * processor / waited;
  return cost;
}

}  // namespace orb::bench
