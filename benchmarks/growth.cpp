// How the cost of rescanning grows with what has been received, and with the time-out.

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "assembler/assembler.h"
#include "support/turns.h"
#include "transport/receive_buffer.h"

namespace orb::bench {

namespace {

Row growthRow(std::string work, const std::string& title, std::string unit, Series series) {
  return {.work = std::move(work),
          .title = title,
          .unit = std::move(unit),
          .value = series.points.back().second,
          .series = std::move(series)};
}

Row rescan(std::string work, const std::string& label, const Bytes& bytes) {
  constexpr std::size_t kLeastFill = 80;
  constexpr int kRepeats = 15;
  Assembler assembler;
  Series series{.x = "bytes in the buffer", .y = "ns a round", .label = label, .points = {}};
  for (std::size_t fill = kLeastFill; fill <= bytes.size(); fill *= 2) {
    const auto scan = [&] { assembler.updateAndEmpty(bytes.data(), fill); };
    const long calls = callsPerTurn(scan);
    std::vector<double> times;
    for (int repeat = 0; repeat < kRepeats; ++repeat) {
      times.push_back(timePerCall(scan, calls));
    }
    series.points.emplace_back(fill, median(times));
  }
  return growthRow(std::move(work), "round over a full buffer (5 KiB) of " + label, "ns/round",
                   std::move(series));
}

std::vector<Row> byFill() {
  constexpr std::size_t kBuffer = 5120;
  constexpr std::size_t kShortPayload = 20;
  return {rescan("growth-fill-text", "text", textBytes(kBuffer)),
          rescan("growth-fill-frames", "packets", packets(kShortPayload, kBuffer))};
}

// Processor time of all the rounds of a wait that ends by its time-out, without the reads: the
// bytes come one by one, at 115200 baud.
double roundsOfWait(int seconds, const Bytes& feed) {
  ReceiveBuffer buffer(seconds);
  Assembler assembler;
  std::size_t next = 0;
  const auto take = [&] {
    buffer.makeRoom();
    *buffer.end() = feed[next++ % feed.size()];
    buffer.append(1);
    assembler.updateAndEmpty(buffer.data(), buffer.size());
  };
  constexpr long kBytesPerSecond = 11520;
  return timePerCall(take, seconds * kBytesPerSecond) * kBytesPerSecond;
}

Row timeouts(std::string work, const std::string& label, const Bytes& feed) {
  constexpr double kNanosecondsPerPercent = 1e7;
  Series series{.x = "time-out, s", .y = "% of one core", .label = label, .points = {}};
  for (const int seconds : {1, 2, 5, 10, 20}) {
    series.points.emplace_back(seconds, roundsOfWait(seconds, feed) / kNanosecondsPerPercent);
  }
  return growthRow(std::move(work), "rounds of a 20 s time-out under " + label + ", byte by byte",
                   "% of core", std::move(series));
}

std::vector<Row> byTimeout() {
  constexpr std::size_t kFeed = 4096;
  constexpr std::size_t kLongPayload = 59;
  constexpr std::size_t kLongPacket = kLongPayload + 7;
  return {timeouts("growth-timeout-text", "text", textBytes(kFeed)),
          timeouts("growth-timeout-noise", "random bytes", randomBytes(kFeed)),
          timeouts("growth-timeout-frames", "packets that are not awaited",
                   packets(kLongPayload, kFeed / kLongPacket * kLongPacket))};
}

const Work kWorks[] = {{"growth-fill", byFill}, {"growth-timeout", byTimeout}};

}  // namespace

}  // namespace orb::bench

int main(int argc, char** argv) { return orb::bench::run(argc, argv, orb::bench::kWorks); }
