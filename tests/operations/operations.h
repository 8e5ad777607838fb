#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "operations/operation.h"

namespace orb::test {

/// All rows, of all families.
const Family& everyOperation();

/// The row of that name.
const Query& query(std::string_view name);
const Setting& setting(std::string_view name);

/// The message that this packet carries, as 16 bits.
std::uint16_t messageIn(const std::string& packet);

/// Any operation, with arguments drawn at random.
struct Operation {
  std::string name;
  std::vector<std::uint16_t> replies;  ///< messages that it takes its values from
  Draw draw;
  std::function<std::string(const sim::State&)> outputs{};   ///< see Query::inState
  std::function<std::string(const sim::State&)> readBack{};  ///< see Composite
};
const std::vector<Operation>& operations();

/// Whether a call left outputs that go with a receiver in this state.
bool isTrue(const Operation& operation, const std::string& outputs, const sim::State& state);

/// All settings of a receiver, as the driver's queries read them.
std::string settingsOf(const sim::State& state);

/// The state after the drawn call has had its effect.
sim::State after(const Drawn& drawn, sim::State state);

}  // namespace orb::test
