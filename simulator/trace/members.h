#pragma once

/// The names in a trace's lines.
namespace orb::sim::trace_member {

// The first line.
inline constexpr char kVersion[] = "orb-sim-trace";
inline constexpr int kCurrentVersion = 1;
inline constexpr char kDevice[] = "device";
inline constexpr char kStarted[] = "started";

// Every other line.
inline constexpr char kTime[] = "time";
inline constexpr char kFrom[] = "from";
inline constexpr char kClient[] = "client";
inline constexpr char kReceiver[] = "receiver";
inline constexpr char kBytes[] = "bytes";

}  // namespace orb::sim::trace_member
