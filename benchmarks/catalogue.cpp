// The catalogue's lookup by identity.

#include "orb-gnss/catalogue.h"

#include "limits/array_read.h"
#include "support/turns.h"

namespace orb::bench {

namespace {

Row lookup(const char* name, const char* title, ORBMsgId id) {
  const Turns turns =
      takeTurns([&] { orbGetMessageDescription(id, 0); }, [&] { readArray(id, 0); });
  return compared({.work = name, .title = title, .unit = "ns/lookup", .bound = 4}, turns, 1);
}

std::vector<Row> lookups() {
  return {
      lookup("catalogue-first", "catalogue lookup, first row", {0x00, 0x00}),
      lookup("catalogue-last", "catalogue lookup, last row", {0xC3, 0x00}),
      lookup("catalogue-sub-id", "catalogue lookup, row with sub-id", {0x64, 0x8E}),
      lookup("catalogue-miss-first", "catalogue lookup, miss before the second row", {0x00, 0x01}),
      lookup("catalogue-miss-last", "catalogue lookup, miss after the last row", {0xFE, 0x00})};
}

const Work kWorks[] = {{"catalogue", lookups}};

}  // namespace

}  // namespace orb::bench

int main(int argc, char** argv) { return orb::bench::run(argc, argv, orb::bench::kWorks); }
