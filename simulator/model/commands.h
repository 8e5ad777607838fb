#pragma once

#include <cstddef>
#include <string_view>

#include "model/body.h"
#include "model/message_ids.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// A message that the receiver takes: a setting, a query or an order. It has one of the functions.
struct Command {
  std::string_view name;  ///< in scenarios
  message::Id id;
  std::size_t length;  ///< of the payload, id bytes included

  /// A setting: reads the body up to the attribute byte.
  void (*store)(Settings& settings, BodyReader& body) = nullptr;
  bool hasAttribute = true;  ///< else the setting's last byte means nothing

  /// A query: writes the body of the reply.
  void (*report)(const State& state, BodyWriter& body) = nullptr;
  message::Id reply = 0;

  /// An order. `saved` are the settings that outlive a restart.
  void (*obey)(State& state, Settings& saved, const Bytes& body) = nullptr;
};

/// The command of this id or name, or null where the receiver knows none.
const Command* findCommand(message::Id id);
const Command* findCommand(std::string_view name);

/// True for the id of a setting.
bool isSetting(message::Id id);

}  // namespace orb::sim
