#pragma once

#include <cstddef>
#include <cstdint>

namespace orb::sim {

/// The longest instruction; so many bytes must be readable where a length is asked for.
inline constexpr std::size_t kLongestInstruction = 15;

/// The length of the x86-64 instruction at `code`; 0 where there is none, or one that is for the
/// operating system and programs do not have.
std::size_t instructionLength(const std::uint8_t* code) noexcept;

}  // namespace orb::sim
