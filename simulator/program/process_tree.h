#pragma once

namespace orb::sim {

/// Lets the processes that this one's descendants leave behind become its own children, instead of
/// escaping.
void adoptOrphans();

/// Kills every child of this process, and theirs as they become its own, until there is none.
/// Children that may not be killed, having gained other rights, are left.
void endAllChildren() noexcept;

}  // namespace orb::sim
