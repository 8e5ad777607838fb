#include "support/turns.h"

#include <algorithm>
#include <ctime>
#include <functional>
#include <iterator>

namespace orb::bench {

namespace {

std::vector<double> quotients(const std::vector<double>& above, const std::vector<double>& below) {
  std::vector<double> quotients;
  std::transform(above.begin(), above.end(), below.begin(), std::back_inserter(quotients),
                 std::divides<>());
  return quotients;
}

}  // namespace

double median(std::vector<double> figures) {
  std::sort(figures.begin(), figures.end());
  const std::size_t middle = figures.size() / 2;
  return figures.size() % 2 == 1 ? figures[middle] : (figures[middle - 1] + figures[middle]) / 2;
}

double threadNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

std::vector<double> Turns::timeRatios() const { return quotients(work, limit); }
std::vector<double> Turns::speedRatios() const { return quotients(limit, work); }

}  // namespace orb::bench
