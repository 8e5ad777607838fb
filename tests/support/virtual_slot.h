#pragma once

#include <cstddef>
#include <cstring>

namespace orb::test {

/// The place of a virtual function in its class's virtual table, counted from 0. In the Itanium C++
/// ABI a pointer to a virtual member function starts with its offset in the table, on most
/// processors with a mark in the lowest bit.
template <typename Function>
std::size_t slotOf(Function function) {
  std::size_t offset = 0;
  static_assert(sizeof function == 2 * sizeof offset);
  std::memcpy(&offset, &function, sizeof offset);
  return offset / sizeof(void*);
}

}  // namespace orb::test
