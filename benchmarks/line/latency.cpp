#include "line/latency.h"

#include <algorithm>
#include <cmath>

#include "support/turns.h"

namespace orb::bench {

double quantile(std::vector<double> figures, double share) {
  const auto rank = std::ceil(share * static_cast<double>(figures.size()));
  const auto nth = figures.begin() + std::max(0L, static_cast<long>(rank) - 1);
  std::nth_element(figures.begin(), nth, figures.end());
  return *nth;
}

double Blocks::medianQuantile(const std::vector<std::vector<double>>& blocks, double share) {
  std::vector<double> quantiles;
  quantiles.reserve(blocks.size());
  for (const std::vector<double>& block : blocks) {
    quantiles.push_back(quantile(block, share));
  }
  return median(quantiles);
}

std::vector<double> Blocks::ratios(double share) const {
  std::vector<double> ratios;
  for (std::size_t block = 0; block < work.size(); ++block) {
    ratios.push_back(quantile(work[block], share) / quantile(limit[block], share));
  }
  return ratios;
}

Blocks compare(const std::function<void()>& work, const std::function<void()>& limit, int blocks,
               int pairs) {
  Blocks times;
  for (int block = 0; block < blocks; ++block) {
    std::vector<double>& workTimes = times.work.emplace_back();
    std::vector<double>& limitTimes = times.limit.emplace_back();
    for (int pair = 0; pair < pairs; ++pair) {
      // Who comes first changes, so that neither profits from the other.
      if (pair % 2 == 0) {
        workTimes.push_back(microsecondsOf(work));
        limitTimes.push_back(microsecondsOf(limit));
      } else {
        limitTimes.push_back(microsecondsOf(limit));
        workTimes.push_back(microsecondsOf(work));
      }
    }
  }
  return times;
}

}  // namespace orb::bench
