#include <benchmark/benchmark.h>

#include <vector>

#include "limits/text_scan.h"
#include "orb-gnss/message_builder.h"
#include "support/turns.h"
#include "support/work.h"

namespace {

using orb::bench::Row;
using orb::bench::Sense;

constexpr unsigned long kTextLength = 4096;

// Text without start bytes, as NMEA sentences are.
std::vector<Row> scanText() {
  const std::vector<unsigned char> text(kTextLength, '$');
  ORBMessageList list;
  ORBMessageBuilder builder(&list);
  const orb::bench::Turns times = orb::bench::takeTurns(
      [&] { benchmark::DoNotOptimize(builder.update(0x83, text.data(), text.size())); },
      [&] { benchmark::DoNotOptimize(orb::bench::scanForStartByte(text.data(), text.size())); });

  std::vector<double> ratios;
  for (const double ratio : times.ratios()) {
    ratios.push_back(1 / ratio);
  }
  const auto speed = [](double nanoseconds) { return kTextLength / nanoseconds; };
  return {Row{.work = "assembler-text",
              .title = "4 KiB of text without start bytes",
              .unit = "GB/s",
              .value = speed(orb::bench::median(times.work)),
              .limit = speed(orb::bench::median(times.limit)),
              .ratio = orb::bench::median(ratios),
              .sense = Sense::kAtLeast,
              .bound = 0.9,
              .samples = ratios}};
}

const orb::bench::Work kWorks[] = {{"assembler-text", scanText}};

}  // namespace

int main(int argc, char** argv) { return orb::bench::runWorks(argc, argv, kWorks); }
