#include "support/turns.h"

#include <algorithm>
#include <iterator>

namespace orb::bench {

double median(std::vector<double> figures) {
  std::sort(figures.begin(), figures.end());
  const std::size_t middle = figures.size() / 2;
  return figures.size() % 2 == 1 ? figures[middle] : (figures[middle - 1] + figures[middle]) / 2;
}

std::vector<double> Turns::ratios() const {
  std::vector<double> ratios;
  std::transform(work.begin(), work.end(), limit.begin(), std::back_inserter(ratios),
                 [](double one, double other) { return one / other; });
  return ratios;
}

double threadNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

}  // namespace orb::bench
