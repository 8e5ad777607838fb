#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orb {

class Receiver;

/// An argument or a result of an operation: of any of its integer types, of its floating-point
/// types.
using Value = std::variant<bool, long long, double, std::string>;

/// An argument as its row tells of it.
struct ArgumentText {
  std::string_view name;
  std::string_view unit = {};
  double lowest = -std::numeric_limits<double>::infinity();
  double highest = std::numeric_limits<double>::infinity();
};

/// An argument of an operation.
struct Argument {
  enum class Type { Boolean, Integer, Number, Text };

  std::string_view name;
  Type type = Type::Text;
  bool isOutput = false;
  std::string_view unit;
  /// What the operation takes: of its C++ type, or of the narrower range that the receiver takes.
  double lowest = 0;
  double highest = 0;
};

/// The longest time that an operation takes on a line that carries bytes.
struct LongestTime {
  int awaitedReplies = 0;
  int milliseconds = 0;
};

/// What a client can ask of the receiver: an operation of the facade, or a command of the driver.
struct Operation {
  static constexpr std::size_t kMostArguments = 7;
  /// Stands for the bits where the result is no mask of what went wrong.
  static constexpr unsigned int kNoMask = ~0U;

  std::string_view name;
  std::array<Argument, kMostArguments> argumentStore;
  std::size_t argumentCount = 0;
  std::string_view does;
  /// The bits that its result can have, or kNoMask.
  unsigned int resultBits = 0;
  LongestTime longest;
  /// What surprises; empty where nothing does.
  std::string_view toKnow;
  /// Whether it is called on the facade, which looks for module and receiver when it is made.
  bool isOfFacade = false;
  /// Calls it. Outputs are also inputs: an operation that fails leaves them as they were.
  Value (*call)(Receiver& receiver, std::vector<Value>& values) = nullptr;

  std::span<const Argument> arguments() const { return {argumentStore.data(), argumentCount}; }

  std::chrono::milliseconds longestTime() const {
    constexpr int kReplyTimeoutMilliseconds = 5000;
    return std::chrono::milliseconds(longest.awaitedReplies * kReplyTimeoutMilliseconds +
                                     longest.milliseconds);
  }
};

/// All of them: the sixty of every controller by their slots, then the facade's, then the driver's.
std::span<const Operation> operations();

/// The operation of this name with so many arguments, outputs included; null where there is none.
const Operation* findOperation(std::string_view name, std::size_t argumentCount);

}  // namespace orb
