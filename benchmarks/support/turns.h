#pragma once

#include <ctime>
#include <vector>

namespace orb::bench {

/// The middle one, or the mean of the two in the middle. Not for an empty set.
double median(std::vector<double> figures);

/// A work and its limit, measured in turns.
struct Turns {
  std::vector<double> work;   ///< nanoseconds a call, one entry a turn
  std::vector<double> limit;  ///< likewise

  std::vector<double> ratios() const;
};

/// Processor time of the calling thread in nanoseconds: what other processes take does not count.
double threadNanoseconds();

/// Nanoseconds of processor time that one of `calls` calls of `function` takes.
template <typename Function>
double timePerCall(Function&& function, long calls) {
  const double start = threadNanoseconds();
  for (long call = 0; call < calls; ++call) {
    function();
  }
  return (threadNanoseconds() - start) / static_cast<double>(calls);
}

/// As many calls of `function` as take about a millisecond and a half.
template <typename Function>
long callsPerTurn(Function&& function) {
  constexpr double kNanosecondsPerTurn = 1.5e6;
  for (long calls = 1;; calls *= 2) {
    const double time = timePerCall(function, calls) * static_cast<double>(calls);
    if (time > kNanosecondsPerTurn / 2) {
      return calls;
    }
  }
}

/// Runs both in turns, `turns` times, after a warm-up; who comes first changes from turn to turn.
template <typename Work, typename Limit>
Turns takeTurns(Work&& work, Limit&& limit, int turns = 101) {
  const long workCalls = callsPerTurn(work);
  const long limitCalls = callsPerTurn(limit);
  Turns times;
  for (int turn = 0; turn < turns; ++turn) {
    if (turn % 2 == 0) {
      times.work.push_back(timePerCall(work, workCalls));
      times.limit.push_back(timePerCall(limit, limitCalls));
    } else {
      times.limit.push_back(timePerCall(limit, limitCalls));
      times.work.push_back(timePerCall(work, workCalls));
    }
  }
  return times;
}

}  // namespace orb::bench
