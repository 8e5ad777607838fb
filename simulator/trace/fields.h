#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/message_ids.h"
#include "orb-sim/frame.h"

namespace orb::sim {

/// What a field of a message holds.
struct FieldValue {
  std::string_view name;
  /// Printable ASCII. Of a number that is none: "nan", "inf" or "-inf".
  std::string text;
  std::string_view unit;
  bool isNumber = false;  ///< else a word, or words
};

struct FieldValues {
  std::vector<FieldValue> named;
  Bytes rest;  ///< what follows the fields, or is too short for the next one
};

/// The fields of a message, as far as it has them. A message of which nothing is known is all rest.
FieldValues fieldValues(const Frame& frame);

/// The message's name: in scenarios, or for what the receiver says, what it is about. Empty where
/// it has none.
std::string_view messageName(message::Id id);

/// The message of this name.
std::optional<message::Id> findMessage(std::string_view name);

}  // namespace orb::sim
