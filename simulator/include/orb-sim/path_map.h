#pragma once

#include <string_view>

namespace orb::sim {

/// The paths that this process sees elsewhere than where they are.
///
/// A program that links `orb-sim-interpose` has its calls of open, fopen, stat, unlink and their
/// kin answered through this map, and those of every library it loads, std::fstream included:
///
///     orb::sim::mapPath("/dev/tty_gps", line.path());
///     orb::sim::mapPath("/var/log/orbset-errors.log", folder + "/errors.log");
///
/// A mapped terminal also keeps what the client has written: where the client flushes it, only
/// input that waits to be read is discarded. On a pty, output that the other end has not yet read
/// would otherwise be lost, which no real line does to bytes that are already on the wire.
///
/// Only this process is concerned; programs that it starts see the paths as they are. The map is
/// to be changed while no other thread uses files.

/// How many paths can be mapped at once.
inline constexpr int kMaxMappedPaths = 16;

/// Makes `from`, an absolute path, stand for `to`. A second call for the same path replaces the
/// first. `to` need not exist. A path that is too long or not absolute, or one too many, ends the
/// process with a message: a program must not use the real file by mistake.
void mapPath(std::string_view from, std::string_view to) noexcept;

/// Every path is itself again.
void clearPathMap() noexcept;

}  // namespace orb::sim
