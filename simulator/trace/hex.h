#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "orb-sim/bytes.h"

namespace orb::sim {

/// Two digits a byte, with `separator` between bytes.
std::string toHex(const Bytes& bytes, std::string_view separator = "");

/// The bytes that digits without separators stand for; nothing where they are no such digits.
std::optional<Bytes> fromHex(std::string_view digits);

}  // namespace orb::sim
