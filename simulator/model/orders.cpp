#include "model/message_ids.h"
#include "model/messages.h"

namespace orb::sim {
namespace {

void softReset(State& state, const Bytes& body) {
  ++state.softResets;
  state.lastSoftReset = body;
}

void restart(State& state, const Bytes& body) {
  ++state.restarts;
  state.lastRestart = body;
}

void setFactoryDefaults(State& state, const Bytes&) {
  static_cast<Settings&>(state) = Settings{};
  state.surveyed = std::chrono::milliseconds{0};
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
