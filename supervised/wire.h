#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "operation_table/operation.h"

namespace orb {

// What supervisor and worker say to each other over their socket pair. Both run on one machine,
// from one build: numbers are as in memory.

/// A frame that says that a request follows at once, unless the line is another's: waking up takes
/// as long as taking the lock.
constexpr char kAnnouncement[] = "!";

/// For how long both wait for a frame without sleeping. Some exchanges with a receiver take no
/// longer, and waking up takes a good part of that.
constexpr std::chrono::microseconds kAwake{300};

/// An operation, by its place in the table, with its arguments.
struct CallRequest {
  std::size_t operation = 0;
  std::vector<Value> arguments;
};

/// What became of it.
struct CallResponse {
  enum class Kind : unsigned char { Returned, LogicError, Exception };

  Kind kind = Kind::Returned;
  Value result;
  /// As the operation left them; with an exception, its text alone.
  std::vector<Value> arguments;
};

std::string encode(const CallRequest& request);
std::string encode(const CallResponse& response);

// Of the text of one frame. Throws std::runtime_error where it is malformed.

CallRequest decodeRequest(std::string_view bytes);
CallResponse decodeResponse(std::string_view bytes);

}  // namespace orb
