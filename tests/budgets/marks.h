#pragma once

namespace orb::test {

/// Writing one byte to this descriptor, which is never open, marks a place in a trace.
constexpr int kMarkDescriptor = 999;

}  // namespace orb::test
