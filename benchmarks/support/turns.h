#pragma once

#include <vector>

namespace orb::bench {

/// The middle one, or the mean of the two in the middle. Not for an empty set.
double median(std::vector<double> figures);

/// Processor time of the calling thread in nanoseconds: what other processes take does not count.
double threadNanoseconds();

/// A work and its limit, measured in turns.
struct Turns {
  std::vector<double> work;   ///< nanoseconds a call, one entry a turn
  std::vector<double> limit;  ///< likewise

  /// Work through limit, turn by turn: how many times the limit's time the work took.
  std::vector<double> timeRatios() const;
  /// Limit through work: how much of the limit's speed the work reached.
  std::vector<double> speedRatios() const;
};

/// Nanoseconds of processor time that one of `calls` calls of `function` takes.
template <typename Function>
double timePerCall(Function&& function, long calls) {
  const double start = threadNanoseconds();
  for (long call = 0; call < calls; ++call) {
    function();
  }
  return (threadNanoseconds() - start) / static_cast<double>(calls);
}

/// As many calls of `function` as take about a millisecond.
template <typename Function>
long callsPerTurn(Function&& function) {
  constexpr double kNanosecondsPerTurn = 1e6;
  long calls = 1;
  while (timePerCall(function, calls) * static_cast<double>(calls) < kNanosecondsPerTurn / 2) {
    calls *= 2;
  }
  return calls;
}

/// Calls two functions in turns that return the nanoseconds taken; who comes first changes from
/// turn to turn. The first turn is a warm-up and does not count.
template <typename Work, typename Limit>
Turns takeTimedTurns(Work&& work, Limit&& limit, int turns) {
  Turns times;
  for (int turn = 0; turn <= turns; ++turn) {
    const double early = turn % 2 == 0 ? work() : limit();
    const double late = turn % 2 == 0 ? limit() : work();
    if (turn > 0) {
      times.work.push_back(turn % 2 == 0 ? early : late);
      times.limit.push_back(turn % 2 == 0 ? late : early);
    }
  }
  return times;
}

/// Calls two functions in turns of a millisecond each.
template <typename Work, typename Limit>
Turns takeTurns(Work&& work, Limit&& limit, int turns = 201) {
  const long workCalls = callsPerTurn(work);
  const long limitCalls = callsPerTurn(limit);
  return takeTimedTurns([&] { return timePerCall(work, workCalls); },
                        [&] { return timePerCall(limit, limitCalls); }, turns);
}

}  // namespace orb::bench
