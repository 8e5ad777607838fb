// How the cost of rescanning grows with what has been received, and with the time-out.

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "orb-gnss/message_builder.h"
#include "support/sample_bytes.h"
#include "support/turns.h"
#include "support/work.h"
#include "transport/receive_buffer.h"

namespace {

using orb::bench::Bytes;
using orb::bench::Row;
using orb::bench::Series;
using orb::bench::timePerCall;

constexpr unsigned char kReplyId = 0x83;
constexpr std::size_t kLeastFill = 80;
constexpr std::size_t kShortPayload = 20;
constexpr std::size_t kLongPayload = 59;
constexpr std::size_t kLongPacket = kLongPayload + 7;

// One round of a wait: the buffer is scanned, and what it lists is not what is awaited.
struct Round {
  ORBMessageList list{};
  ORBMessageBuilder builder{&list};

  void operator()(const unsigned char* bytes, std::size_t length) {
    builder.update(kReplyId, bytes, length);
    list.Empty();
  }
};

Row rescan(std::string work, std::string label, const Bytes& bytes) {
  Round round;
  Series series{.x = "bytes in the buffer", .y = "ns a round", .label = label, .points = {}};
  for (std::size_t fill = kLeastFill; fill <= bytes.size(); fill *= 2) {
    const auto scan = [&] { round(bytes.data(), fill); };
    const long calls = orb::bench::callsPerTurn(scan);
    std::vector<double> times;
    for (int repeat = 0; repeat < 15; ++repeat) {
      times.push_back(timePerCall(scan, calls));
    }
    series.points.emplace_back(fill, orb::bench::median(times));
  }
  return Row{.work = std::move(work),
             .title = "round over a full buffer (5 KiB) of " + label,
             .unit = "ns/round",
             .value = series.points.back().second,
             .series = series};
}

std::vector<Row> byFill() {
  constexpr std::size_t kBuffer = 5120;
  return {rescan("growth-fill-text", "text", orb::bench::text(kBuffer)),
          rescan("growth-fill-frames", "packets", orb::bench::packets(kShortPayload, kBuffer))};
}

// Processor time of all the rounds of a wait that ends by its time-out, without the reads: the
// bytes come one by one, at 115200 baud.
double roundsOfWait(int seconds, const Bytes& feed) {
  orb::ReceiveBuffer buffer(seconds);
  Round round;
  std::size_t next = 0;
  const auto take = [&] {
    buffer.makeRoom();
    *buffer.end() = feed[next++ % feed.size()];
    buffer.append(1);
    round(buffer.data(), buffer.size());
  };
  constexpr long kBytesPerSecond = 11520;
  return timePerCall(take, seconds * kBytesPerSecond) * kBytesPerSecond;
}

Row timeouts(std::string work, std::string label, const Bytes& feed) {
  constexpr double kNanosecondsPerPercent = 1e7;
  Series series{.x = "time-out, s", .y = "% of one core", .label = label, .points = {}};
  for (const int seconds : {1, 2, 5, 10, 20}) {
    series.points.emplace_back(seconds, roundsOfWait(seconds, feed) / kNanosecondsPerPercent);
  }
  return Row{.work = std::move(work),
             .title = "rounds of a 20 s time-out under " + label + ", byte by byte",
             .unit = "% of core",
             .value = series.points.back().second,
             .series = series};
}

std::vector<Row> byTimeout() {
  constexpr std::size_t kFeed = 4096;
  return {timeouts("growth-timeout-text", "text", orb::bench::text(kFeed)),
          timeouts("growth-timeout-noise", "random bytes", orb::bench::randomBytes(kFeed)),
          timeouts("growth-timeout-frames", "packets that are not awaited",
                   orb::bench::packets(kLongPayload, kFeed / kLongPacket * kLongPacket))};
}

const orb::bench::Work kWorks[] = {{"growth-fill", byFill}, {"growth-timeout", byTimeout}};

}  // namespace

int main(int argc, char** argv) { return orb::bench::runWorks(argc, argv, kWorks); }
