// The catalogue's lookup by identity.

#include <benchmark/benchmark.h>

#include <vector>

#include "limits/array_read.h"
#include "orb-gnss/catalogue.h"
#include "support/turn_rows.h"

namespace {

using orb::bench::Row;

Row lookup(const char* name, const char* title, ORBMsgId id) {
  const auto find = [&id] {
    benchmark::DoNotOptimize(id);
    benchmark::DoNotOptimize(orbGetMessageDescription(id, 0));
  };
  const auto read = [&id] {
    benchmark::DoNotOptimize(id);
    benchmark::DoNotOptimize(orb::bench::readArray(id, 0));
  };
  return timeRow(name, title, orb::bench::takeTurns(find, read), 4, 1, "lookup");
}

std::vector<Row> lookups() {
  return {
      lookup("catalogue-first", "catalogue lookup, first row", {0x00, 0x00}),
      lookup("catalogue-last", "catalogue lookup, last row", {0xC3, 0x00}),
      lookup("catalogue-sub-id", "catalogue lookup, row with sub-id", {0x64, 0x8E}),
      lookup("catalogue-miss-first", "catalogue lookup, miss before the second row", {0x00, 0x01}),
      lookup("catalogue-miss-last", "catalogue lookup, miss behind the last row", {0xFE, 0x00})};
}

const orb::bench::Work kWorks[] = {{"catalogue", lookups}};

}  // namespace

int main(int argc, char** argv) { return orb::bench::runWorks(argc, argv, kWorks); }
