#include "operations/operations.h"

#include <fnmatch.h>

#include <algorithm>
#include <stdexcept>

#include "orb-sim/frame.h"
#include "support/hex_text.h"

namespace orb::test {

namespace {

template <typename Row>
void append(std::vector<Row>& all, const std::vector<Row>& rows) {
  all.insert(all.end(), rows.begin(), rows.end());
}

Family joined(std::initializer_list<Family> families) {
  Family all;
  for (const Family& family : families) {
    append(all.queries, family.queries);
    append(all.settings, family.settings);
    append(all.orders, family.orders);
    append(all.composites, family.composites);
  }
  return all;
}

template <typename Row>
const Row& named(const std::vector<Row>& rows, std::string_view name) {
  const auto row = std::find_if(rows.begin(), rows.end(),
                                [&](const Row& candidate) { return candidate.name == name; });
  if (row == rows.end()) {
    throw std::out_of_range("no operation " + std::string(name));
  }
  return *row;
}

std::string nothing(const sim::State& /*state*/) { return ""; }

std::vector<Operation> drawable() {
  std::vector<Operation> all;
  const Family& rows = everyOperation();
  for (const Query& row : rows.queries) {
    const std::vector<std::uint16_t> reply{messageIn(row.reply.packet)};
    if (row.inState) {
      const auto call = [&row](Numbers&) { return Drawn{.call = row.call}; };
      all.push_back({row.name, reply, call, row.inState});
    } else if (row.draw) {
      all.push_back({row.name, reply, row.draw, {}, nothing});
    }
  }
  for (const Setting& row : rows.settings) {
    if (row.draw) {
      all.push_back({row.name, {messageIn(row.reply.packet)}, row.draw});
    }
  }
  for (const Order& row : rows.orders) {
    if (row.draw) {
      all.push_back({row.name, {}, row.draw, {}, nothing});
    }
  }
  for (const Composite& row : rows.composites) {
    all.push_back({row.name, row.replies, row.draw, {}, row.readBack});
  }
  return all;
}

}  // namespace

const Family& everyOperation() {
  static const Family kAll =
      joined({constellations(), defaults(), detectionAndRestart(), extendedNmea(),
              firmwareVersion(), gpsTime(), masksAndFix(), navigationData(), navigationModel(),
              outputAndPower(), ppsOutputMode(), survey(), timingPulse()});
  return kAll;
}

const Query& query(std::string_view name) { return named(everyOperation().queries, name); }
const Setting& setting(std::string_view name) { return named(everyOperation().settings, name); }

std::uint16_t messageIn(const std::string& packet) {
  sim::FrameReader reader;
  return reader.push(hex(packet)).at(0).id();
}

const std::vector<Operation>& operations() {
  static const std::vector<Operation> kAll = drawable();
  return kAll;
}

bool isTrue(const Operation& operation, const std::string& outputs, const sim::State& state) {
  const std::string pattern = operation.outputs ? operation.outputs(state) : "";
  return ::fnmatch(pattern.c_str(), outputs.c_str(), 0) == 0;
}

std::string settingsOf(const sim::State& state) {
  std::string settings = "output type " + text(static_cast<int>(state.outputType));
  for (const Operation& operation : operations()) {
    if (operation.outputs) {
      settings += "\n" + operation.name + " " + operation.outputs(state);
    }
  }
  return settings;
}

sim::State after(const Drawn& drawn, sim::State state) {
  if (drawn.effect) {
    drawn.effect(state);
  }
  return state;
}

}  // namespace orb::test
