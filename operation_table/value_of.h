#pragma once

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "operation_table/operation.h"

namespace orb {

/// A C++ value as an argument or result of an operation.
template <typename T>
Value toValue(const T& value) {
  if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>) {
    return static_cast<long long>(value);
  } else if constexpr (std::is_floating_point_v<T>) {
    return static_cast<double>(value);
  } else {
    return value;
  }
}

/// The other way round. Throws std::invalid_argument where the value is of another kind or does not
/// fit.
template <typename T>
T fromValue(const Value& value) {
  using Held = std::conditional_t<
      std::is_same_v<T, bool>, bool,
      std::conditional_t<std::is_integral_v<T>, long long,
                         std::conditional_t<std::is_floating_point_v<T>, double, std::string>>>;
  if (const Held* const held = std::get_if<Held>(&value)) {
    if constexpr (std::is_same_v<T, std::string>) {
      return *held;
    } else if constexpr (std::is_same_v<Held, long long>) {
      if (!std::in_range<T>(*held)) {
        throw std::invalid_argument("an argument that is too large or too small for its type");
      }
      return static_cast<T>(*held);
    } else {
      if constexpr (std::is_same_v<T, float>) {
        if (std::abs(*held) > std::numeric_limits<float>::max() && std::isfinite(*held)) {
          throw std::invalid_argument("an argument that is too large or too small for its type");
        }
      }
      return static_cast<T>(*held);
    }
  }
  throw std::invalid_argument("an argument of another type");
}

}  // namespace orb
