#pragma once

namespace orb::test {

/// Writing one byte to this descriptor, which is never open, marks a place in a trace.
constexpr int kMarkDescriptor = 999;

/// How often the traced program asks by the library and then by a bare loop, each between two
/// marks. What a first query alone does, such as asking the system for memory, is no part of the
/// cost.
constexpr int kTracedTurns = 3;

}  // namespace orb::test
