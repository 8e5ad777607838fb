#include "model/message_ids.h"
#include "model/messages.h"
#include "model/starts.h"
#include "model/survey.h"

namespace orb::sim {
namespace {

/// The first byte tells how to start. The date, the time and the place that may follow are hints
/// for a receiver that has lost its own, and this one takes none.
void softReset(State& state, Settings& saved, const Bytes& body) {
  constexpr std::uint8_t kHot = 1;
  constexpr std::uint8_t kWarm = 2;
  constexpr std::uint8_t kCold = 3;
  ++state.softResets;
  state.lastSoftReset = body;
  switch (body[0]) {
    case kHot:
      return startAnew(state, saved, Start::Hot);
    case kWarm:
      return startAnew(state, saved, Start::Warm);
    case kCold:
      return startAnew(state, saved, Start::Cold);
    default:
      return;
  }
}

/// The flag asks it to forget what it knows.
void restart(State& state, Settings& saved, const Bytes& body) {
  ++state.restarts;
  state.lastRestart = body;
  startAnew(state, saved, body[0] == 0 ? Start::Hot : Start::Cold);
}

void setFactoryDefaults(State& state, Settings& saved, const Bytes&) {
  saved = Settings{};
  static_cast<Settings&>(state) = saved;
  beginSurvey(state);
  ++state.factoryResets;
}

constexpr Order kOrders[] = {
    {message::kSoftReset, 15, softReset},
    {message::kSetFactoryDefaults, 2, setFactoryDefaults},
    {message::kRestart, 3, restart},
};

}  // namespace

const Order* findOrder(std::uint16_t id) {
  for (const Order& order : kOrders) {
    if (order.id == id) {
      return &order;
    }
  }
  return nullptr;
}

}  // namespace orb::sim
