#pragma once

#include <cstddef>
#include <vector>

#include "support/work.h"

namespace orb::bench {

/// The figure that `share` of all figures do not exceed. Not for an empty set.
double quantile(std::vector<double> figures, double share);

/// The middle one, the lower of the two where there are two. Not for an empty set.
double median(const std::vector<double>& figures);

/// Processor time of the calling thread in nanoseconds: what other processes take does not count.
double threadNanoseconds();

/// Real time in nanoseconds, of the clock that runs steadily.
double realNanoseconds();

/// Nanoseconds by `clock` that one of `calls` calls of `function` takes.
template <typename Function>
double timePerCall(Function&& function, long calls, double (*clock)() = threadNanoseconds) {
  const double start = clock();
  for (long call = 0; call < calls; ++call) {
    function();
  }
  return (clock() - start) / static_cast<double>(calls);
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

/// What one call of a work and one of its limit took, in nanoseconds, measured one after the other.
struct Turn {
  double work = 0;
  double limit = 0;
};

using Turns = std::vector<Turn>;

/// Calls two functions in turns that return the nanoseconds taken; which comes first alternates.
/// The first turn is a warm-up and does not count.
template <typename Work, typename Limit>
Turns takeTimedTurns(Work&& work, Limit&& limit, int count) {
  Turns turns;
  for (int number = 0; number <= count; ++number) {
    Turn turn;
    if (number % 2 == 0) {
      turn.work = work();
      turn.limit = limit();
    } else {
      turn.limit = limit();
      turn.work = work();
    }
    if (number > 0) {
      turns.push_back(turn);
    }
  }
  return turns;
}

/// The quarter of the turns in which work and limit together took the least time. What else the
/// machine does only ever adds to it, and more to what runs many instructions than to what waits
/// for memory: over all turns, the ratio would tell how busy the machine is.
Turns quietest(Turns turns);

/// Calls two functions in turns of a millisecond each, and returns the quietest turns.
template <typename Work, typename Limit>
Turns takeTurns(Work&& work, Limit&& limit, int count = 201) {
  const long workCalls = callsPerTurn(work);
  const long limitCalls = callsPerTurn(limit);
  return quietest(takeTimedTurns([&] { return timePerCall(work, workCalls); },
                                 [&] { return timePerCall(limit, limitCalls); }, count));
}

/// The quantile of the works and that of the limits, or those of each block of `size` turns.
Turn quantile(const Turns& turns, double share);
Turns quantilesOfBlocks(const Turns& turns, std::size_t size, double share);

/// The row with its figures: the time for each of the `units` that a call deals with, or, where
/// the row bounds a speed from below, the units for each nanosecond.
Row compared(Row row, const Turns& turns, double units);

}  // namespace orb::bench
