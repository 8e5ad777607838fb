#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "operation_table/operation.h"

namespace orb {

// What supervisor and worker say to each other over their socket pair: frames of a length and so
// many bytes. Both run on one machine, from one build: numbers are as in memory.

/// An operation, by its place in the table, with its arguments.
struct Request {
  std::size_t operation = 0;
  std::vector<Value> arguments;
};

/// What became of it.
struct Response {
  enum class Kind : unsigned char { Returned, LogicError, Exception };

  Kind kind = Kind::Returned;
  Value result;
  /// As the operation left them; with an exception, its text alone.
  std::vector<Value> arguments;
};

std::string encode(const Request& request);
std::string encode(const Response& response);

// The text of one frame, without its length. Throws std::runtime_error where it is malformed.

Request decodeRequest(std::string_view bytes);
Response decodeResponse(std::string_view bytes);

/// A frame is no longer.
constexpr std::size_t kLongestFrame = std::size_t{16} << 20;

}  // namespace orb
