#include "support/turn_rows.h"

#include <utility>

namespace orb::bench {

Row timeRow(std::string work, std::string title, const Turns& times, double bound, double units,
            const std::string& unit) {
  Row row{.work = std::move(work), .title = std::move(title), .unit = "ns/" + unit};
  row.value = median(times.work) / units;
  row.limit = median(times.limit) / units;
  row.samples = times.timeRatios();
  row.ratio = median(row.samples);
  row.sense = Sense::kAtMost;
  row.bound = bound;
  return row;
}

Row speedRow(std::string work, std::string title, const Turns& times, double bound, double bytes) {
  Row row{.work = std::move(work), .title = std::move(title), .unit = "GB/s"};
  row.value = bytes / median(times.work);
  row.limit = bytes / median(times.limit);
  row.samples = times.speedRatios();
  row.ratio = median(row.samples);
  row.sense = Sense::kAtLeast;
  row.bound = bound;
  return row;
}

}  // namespace orb::bench
