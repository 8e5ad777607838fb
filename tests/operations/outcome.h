#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "orb-gnss/module_driver.h"

namespace orb::test {

using Driver = orbController_QN4470T01;

/// Values as one text, such as `12, "2D", true`.
template <typename... Values>
std::string text(const Values&... values) {
  std::ostringstream out;
  out.precision(17);
  out << std::boolalpha;
  const char* separator = "";
  [[maybe_unused]] const auto add = [&](const auto& value) {
    out << std::exchange(separator, ", ");
    if constexpr (std::is_convertible_v<decltype(value), std::string>) {
      out << '"' << value << '"';
    } else if constexpr (std::is_same_v<std::decay_t<decltype(value)>, bool>) {
      out << value;
    } else {
      out << +value;  // a character is a number here
    }
  };
  (add(values), ...);
  return out.str();
}

/// What a call of the driver returns, and what it leaves in its arguments, as text:
///
///     unsigned int mode = 77;
///     const unsigned int result = driver.gpsObtGetPowerMode(mode);
///     return Outcome(result, mode);
struct Outcome {
  template <typename... Outputs>
  explicit Outcome(unsigned int callResult, const Outputs&... values)
      : result(callResult), outputs(text(values...)) {}

  unsigned int result;
  std::string outputs;
};

using Call = std::function<Outcome(Driver&)>;

/// The call of a member with these arguments, which has no outputs.
template <typename Class, typename... Parameters>
Call calling(unsigned int (Class::*member)(Parameters...),
             std::type_identity_t<Parameters>... arguments) {
  return [=](Driver& driver) { return Outcome((driver.*member)(arguments...)); };
}

/// The call of a member that replaces these values by what it reads.
template <typename Class, typename... Values>
Call reading(unsigned int (Class::*member)(Values&...), std::type_identity_t<Values>... before) {
  return [=](Driver& driver) {
    std::tuple<Values...> values(before...);
    return std::apply(
        [&](Values&... read) {
          const unsigned int result = (driver.*member)(read...);
          return Outcome(result, read...);
        },
        values);
  };
}

}  // namespace orb::test
