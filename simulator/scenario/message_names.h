#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace orb::sim {

/// The message that a client sends and that is called `name` in scenarios ("set-update-rate");
/// nothing where none is.
std::optional<std::uint16_t> messageNamed(std::string_view name);

/// All names.
std::vector<std::string_view> messageNames();

}  // namespace orb::sim
