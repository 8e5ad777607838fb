#pragma once

#include <initializer_list>
#include <string_view>

namespace orb::sim {

/// Writes "orb-sim: ", the parts and a newline to standard error, in one piece and without
/// allocating.
void say(std::initializer_list<std::string_view> parts) noexcept;

/// Says `text` and aborts.
[[noreturn]] void endProcess(std::string_view text) noexcept;

}  // namespace orb::sim
