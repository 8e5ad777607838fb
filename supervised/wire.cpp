#include "supervised/wire.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace orb {
namespace {

template <typename Number>
void append(std::string& bytes, Number number) {
  char raw[sizeof number];
  std::memcpy(raw, &number, sizeof number);
  bytes.append(raw, sizeof raw);
}

void append(std::string& bytes, const Value& value) {
  append(bytes, static_cast<std::uint8_t>(value.index()));
  if (const auto* text = std::get_if<std::string>(&value)) {
    append(bytes, static_cast<std::uint32_t>(text->size()));
    bytes += *text;
    return;
  }
  std::visit(
      [&](const auto& held) {
        if constexpr (std::is_arithmetic_v<std::remove_cvref_t<decltype(held)>>) {
          append(bytes, held);
        }
      },
      value);
}

void append(std::string& bytes, const std::vector<Value>& values) {
  append(bytes, static_cast<std::uint32_t>(values.size()));
  for (const Value& value : values) {
    append(bytes, value);
  }
}

/// Takes what the functions above have appended.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}

  template <typename Number>
  Number number() {
    Number result;
    std::memcpy(&result, take(sizeof result).data(), sizeof result);
    return result;
  }

  Value value() {
    switch (number<std::uint8_t>()) {
      case 0:
        return number<std::uint8_t>() != 0;
      case 1:
        return number<long long>();
      case 2:
        return number<double>();
      case 3:
        return std::string(take(number<std::uint32_t>()));
      default:
        throw std::runtime_error("a value of no known type");
    }
  }

  std::vector<Value> values() {
    const auto count = number<std::uint32_t>();
    std::vector<Value> result;
    for (std::uint32_t i = 0; i < count; ++i) {
      result.push_back(value());
    }
    return result;
  }

  void end() const {
    if (!bytes_.empty()) {
      throw std::runtime_error("bytes after the end of a message");
    }
  }

 private:
  std::string_view take(std::size_t count) {
    if (count > bytes_.size()) {
      throw std::runtime_error("a message that ends early");
    }
    const std::string_view taken = bytes_.substr(0, count);
    bytes_.remove_prefix(count);
    return taken;
  }

  std::string_view bytes_;
};

}  // namespace

std::string encode(const CallRequest& request) {
  std::string bytes;
  append(bytes, static_cast<std::uint32_t>(request.operation));
  append(bytes, request.arguments);
  return bytes;
}

std::string encode(const CallResponse& response) {
  std::string bytes;
  append(bytes, response.kind);
  append(bytes, response.result);
  append(bytes, response.arguments);
  return bytes;
}

CallRequest decodeRequest(std::string_view bytes) {
  Reader reader(bytes);
  CallRequest request;
  request.operation = reader.number<std::uint32_t>();
  request.arguments = reader.values();
  reader.end();
  return request;
}

CallResponse decodeResponse(std::string_view bytes) {
  Reader reader(bytes);
  CallResponse response;
  const auto kind = reader.number<std::uint8_t>();
  if (kind > static_cast<std::uint8_t>(CallResponse::Kind::Exception)) {
    throw std::runtime_error("a response of no known kind");
  }
  response.kind = static_cast<CallResponse::Kind>(kind);
  response.result = reader.value();
  response.arguments = reader.values();
  reader.end();
  return response;
}

}  // namespace orb
