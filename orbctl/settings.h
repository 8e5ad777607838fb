#pragma once

#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>

#include "orbctl/session.h"

namespace orb::ctl {

using Json = nlohmann::ordered_json;

/// As text; bytes that are no UTF-8 are replaced.
inline std::string oneLine(const Json& data) {
  return data.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// A setting of the receiver, as a person names, reads and writes it.
struct Setting {
  enum class Kind { Number, Switch, Word, Words };

  std::string_view key;
  std::string_view what;
  Kind kind = Kind::Number;
  /// For a word or several, what there is, comma-separated.
  std::string_view words;
  /// The operations that it uses; one without a query cannot be read.
  std::string_view reads;
  std::string_view writes;

  Json (*read)(Session& session) = nullptr;
  void (*write)(Session& session, const Json& value) = nullptr;
  /// Of a number, where it is not that of the operation's argument.
  long long highest = -1;

  bool isReadable() const { return read != nullptr; }
};

std::span<const Setting> settings();

/// Throws Failure, with the nearest key, where there is none of this name.
const Setting& settingNamed(std::string_view key);

}  // namespace orb::ctl
