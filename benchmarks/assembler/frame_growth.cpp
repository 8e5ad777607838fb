// How the time grows with the number of frames.

#include <cmath>
#include <string>
#include <utility>

#include "assembler/assembler.h"
#include "support/sample_bytes.h"

namespace orb::bench {

namespace {

// The power of the number of frames with which the time of a call grows, by least squares over the
// points, which are nanoseconds a frame: 1 where a frame always takes as long.
double powerOf(const Series& series) {
  double sumX = 0, sumY = 0, sumXX = 0, sumXY = 0;
  for (const auto& [frames, time] : series.points) {
    const double x = std::log(frames);
    const double y = std::log(frames * time);
    sumX += x;
    sumY += y;
    sumXX += x * x;
    sumXY += x * y;
  }
  const auto count = static_cast<double>(series.points.size());
  return (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
}

Row growthRow(std::string work, std::string title, std::string label) {
  return {
      .work = std::move(work),
      .title = std::move(title),
      .unit = "power",
      .series = Series{
          .x = "frames in one call", .y = "ns a frame", .label = std::move(label), .points = {}}};
}

}  // namespace

std::vector<Row> growthByFrames() {
  constexpr std::size_t kPayload = 20;
  constexpr int kTurns = 15;
  Row work = growthRow("assembler-growth", "exponent of its time over the frames, to the limit's",
                       "assembler");
  Row limit =
      growthRow("assembler-growth-limit", "exponent of the limit's time over the frames", "limit");
  for (std::size_t frames = 256; frames <= 131072; frames *= 2) {
    const Bytes bytes = packets(kPayload, frames * (kPayload + kPacketOverhead));
    const Turns times = assembleAllInTurns(bytes, frames, kTurns);
    const auto count = static_cast<double>(frames);
    work.series->points.emplace_back(count, median(times.work) / count);
    limit.series->points.emplace_back(count, median(times.limit) / count);
  }
  limit.value = powerOf(*limit.series);
  work.value = powerOf(*work.series);
  work.limit = limit.value;
  work.ratio = work.value / limit.value;
  work.bound = 1.05;
  return {work, limit};
}

}  // namespace orb::bench
