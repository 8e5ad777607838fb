#pragma once

#include <cstddef>
#include <cstdint>

#include "model/body.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// A command that changes a setting. `store` reads its body up to the attribute byte, which most
/// settings end with.
struct Setting {
  std::uint16_t id;
  std::size_t length;  ///< of the payload, id bytes included
  void (*store)(Settings& settings, BodyReader& body);
};

/// A command that is answered with a reply of its own.
struct Query {
  std::uint16_t id;
  std::size_t length;
  std::uint16_t replyId;
  void (*report)(const State& state, BodyWriter& body);
};

/// A command that makes the receiver do something. `saved` are the settings that outlive a restart.
struct Order {
  std::uint16_t id;
  std::size_t length;
  void (*obey)(State& state, Settings& saved, const Bytes& body);
};

/// The row of a message, or null where the receiver knows none.
const Setting* findSetting(std::uint16_t id);
const Query* findQuery(std::uint16_t id);
const Order* findOrder(std::uint16_t id);

}  // namespace orb::sim
