#pragma once

#include <cstdint>

#include "interpose/elf_file.h"

namespace orb::sim {

/// Whether the machine code in a part of a file has an instruction that makes a system call. Bytes
/// of other instructions, or of tables among them, that look like one are seldom taken for it.
bool makesSystemCalls(const ProgramBytes& bytes, std::uint64_t offset, std::uint64_t size) noexcept;

}  // namespace orb::sim
