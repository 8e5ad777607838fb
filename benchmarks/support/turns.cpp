#include "support/turns.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <functional>
#include <iterator>
#include <utility>

namespace orb::bench {

namespace {

double nanosecondsOf(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

std::vector<double> column(const Turns& turns, double Turn::*side) {
  std::vector<double> figures;
  std::transform(turns.begin(), turns.end(), std::back_inserter(figures), std::mem_fn(side));
  return figures;
}

}  // namespace

double quantile(std::vector<double> figures, double share) {
  const auto rank = std::ceil(share * static_cast<double>(figures.size()));
  const auto nth = figures.begin() + std::max(0L, static_cast<long>(rank) - 1);
  std::nth_element(figures.begin(), nth, figures.end());
  return *nth;
}

double median(const std::vector<double>& figures) { return quantile(figures, 0.5); }

double threadNanoseconds() { return nanosecondsOf(CLOCK_THREAD_CPUTIME_ID); }
double realNanoseconds() { return nanosecondsOf(CLOCK_MONOTONIC); }

Turns quietest(Turns turns) {
  std::ranges::sort(turns, {}, [](const Turn& turn) { return turn.work + turn.limit; });
  turns.resize((turns.size() + 3) / 4);
  return turns;
}

Turn quantile(const Turns& turns, double share) {
  return {quantile(column(turns, &Turn::work), share),
          quantile(column(turns, &Turn::limit), share)};
}

Turns quantilesOfBlocks(const Turns& turns, std::size_t size, double share) {
  Turns quantiles;
  const auto step = static_cast<long>(size);
  for (auto block = turns.begin(); block != turns.end(); block += step) {
    quantiles.push_back(quantile(Turns(block, block + step), share));
  }
  return quantiles;
}

Row compared(Row row, const Turns& turns, double units) {
  const auto figure = [&](double time) {
    return row.sense == Sense::kAtMost ? time / units : units / time;
  };
  const Turn middle = quantile(turns, 0.5);
  row.value = figure(middle.work);
  row.limit = figure(middle.limit);
  for (const Turn& turn : turns) {
    row.samples.push_back(figure(turn.work) / figure(turn.limit));
  }
  row.ratio = median(row.samples);
  return row;
}

}  // namespace orb::bench
