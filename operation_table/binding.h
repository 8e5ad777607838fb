#pragma once

#include <algorithm>
#include <initializer_list>
#include <tuple>
#include <type_traits>
#include <utility>

#include "operation_table/operation.h"
#include "operation_table/receiver.h"
#include "operation_table/value_of.h"

// Makes a row of the table from a member function: its types are the compiler's, its texts the
// row's.

namespace orb {

/// Chooses among overloads: overload<unsigned int(int)>(&Class::member).
template <typename Function, typename Class>
constexpr auto overload(Function Class::*member) {
  return member;
}

namespace binding {

template <typename T>
constexpr Argument argument(const ArgumentText& text) {
  using Held = std::remove_cvref_t<T>;
  Argument result{.name = text.name,
                  .isOutput = std::is_lvalue_reference_v<T>,
                  .unit = text.unit,
                  .lowest = text.lowest,
                  .highest = text.highest};
  if constexpr (std::is_same_v<Held, bool>) {
    result.type = Argument::Type::Boolean;
  } else if constexpr (std::is_integral_v<Held>) {
    result.type = Argument::Type::Integer;
    result.lowest = std::max(text.lowest, double{std::numeric_limits<Held>::min()});
    result.highest = std::min(text.highest, double{std::numeric_limits<Held>::max()});
  } else if constexpr (std::is_floating_point_v<Held>) {
    result.type = Argument::Type::Number;
  }
  return result;
}

template <typename Class>
Class& object(Receiver& receiver) {
  if constexpr (std::is_same_v<Class, Receiver>) {
    return receiver;
  } else if constexpr (std::is_same_v<Class, orbController_QN4470T01>) {
    return receiver.driver();
  } else {
    return receiver.facade();
  }
}

template <typename Member>
struct Call;

template <typename Class, typename Result, typename... Arguments>
struct Call<Result (Class::*)(Arguments...)> {
  static_assert(sizeof...(Arguments) <= Operation::kMostArguments);
  static constexpr bool kIsOfFacade =
      !std::is_same_v<Class, Receiver> && !std::is_same_v<Class, orbController_QN4470T01>;

  template <auto kMember>
  static Value call(Receiver& receiver, std::vector<Value>& values) {
    if (values.size() != sizeof...(Arguments)) {
      throw std::invalid_argument("another number of arguments");
    }
    auto arguments = [&]<std::size_t... kIndexes>(std::index_sequence<kIndexes...>) {
      return std::tuple<std::remove_cvref_t<Arguments>...>{
          fromValue<std::remove_cvref_t<Arguments>>(values[kIndexes])...};
    }
    (std::index_sequence_for<Arguments...>());
    const auto call = [&](auto&... each) -> Value {
      if constexpr (std::is_void_v<Result>) {
        (object<Class>(receiver).*kMember)(each...);
        return 0LL;
      } else {
        return toValue((object<Class>(receiver).*kMember)(each...));
      }
    };
    Value result = std::apply(call, arguments);
    std::apply([&](const auto&... each) { values = {toValue(each)...}; }, arguments);
    return result;
  }

  static constexpr void describe(Operation& row, std::initializer_list<ArgumentText> texts) {
    const ArgumentText* text = texts.begin();
    row.argumentCount = sizeof...(Arguments);
    row.argumentStore = {argument<Arguments>(*text++)...};
  }
};

template <typename Class, typename Result, typename... Arguments>
struct Call<Result (Class::*)(Arguments...) const> : Call<Result (Class::*)(Arguments...)> {};

}  // namespace binding

template <auto kMember>
constexpr Operation operation(std::string_view name, std::initializer_list<ArgumentText> arguments,
                              std::string_view does, unsigned int resultBits, LongestTime longest,
                              std::string_view toKnow) {
  using Call = binding::Call<decltype(kMember)>;
  Operation row{.name = name,
                .argumentStore = {},
                .does = does,
                .resultBits = resultBits,
                .longest = longest,
                .toKnow = toKnow,
                .isOfFacade = Call::kIsOfFacade,
                .call = &Call::template call<kMember>};
  if (arguments.size() != 0) {
    Call::describe(row, arguments);
  }
  return row;
}

}  // namespace orb
