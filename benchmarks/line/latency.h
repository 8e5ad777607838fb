#pragma once

#include <chrono>
#include <functional>
#include <vector>

namespace orb::bench {

/// The figure that `share` of all figures do not exceed. Not for an empty set.
double quantile(std::vector<double> figures, double share);

/// The real time in microseconds that `function` takes.
template <typename Function>
double microsecondsOf(Function&& function) {
  const auto start = std::chrono::steady_clock::now();
  function();
  const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
  return time.count();
}

/// What exchanges of two kinds took, in microseconds, block by block.
struct Blocks {
  std::vector<std::vector<double>> work;
  std::vector<std::vector<double>> limit;

  /// Over the blocks, the median of the blocks' quantiles.
  static double medianQuantile(const std::vector<std::vector<double>>& blocks, double share);
  /// The ratio of the quantiles of work and limit, block by block.
  std::vector<double> ratios(double share) const;
};

/// Does exchanges of two kinds, one by one in turns, in `blocks` blocks of `pairs` pairs.
Blocks compare(const std::function<void()>& work, const std::function<void()>& limit, int blocks,
               int pairs);

}  // namespace orb::bench
