#pragma once

#include "support/hex_text.h"

namespace orb::test {

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

}  // namespace orb::test
