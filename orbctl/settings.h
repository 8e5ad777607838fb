#pragma once

#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>

#include "orbctl/session.h"

namespace orb::ctl {

using Json = nlohmann::ordered_json;

/// A setting of the receiver, as a person names, reads and writes it.
struct Setting {
  enum class Kind { Number, Switch, Word, Words };

  std::string_view key;
  std::string_view what;
  Kind kind = Kind::Number;
  std::string_view unit;
  long long lowest = 0;
  long long highest = 0;
  /// For a word or several, what there is, comma-separated.
  std::string_view words;
  /// The operations that it uses; one without a query cannot be read.
  std::string_view reads;
  std::string_view writes;

  Json (*read)(Session& session) = nullptr;
  void (*write)(Session& session, const Json& value) = nullptr;

  bool isReadable() const { return read != nullptr; }
};

std::span<const Setting> settings();

/// Reads it for a list of many. Null, with a warning, where the receiver does not answer: older
/// firmware does not have every query.
Json readOrWarn(const Setting& setting, Session& session);

/// Throws Failure, with the nearest key, where there is none of this name.
const Setting& settingNamed(std::string_view key);

/// What is taken for the setting, such as "3 .. 85 degrees" or "on, off".
std::string rangeOf(const Setting& setting);

/// The value that `text` names. Throws Failure, with what is taken, where it names none.
Json valueFrom(const Setting& setting, const std::string& text);

/// The value as a person writes it, such as "10" or "gps,galileo", without its unit.
std::string textOf(const Json& value);

/// The nearest of `words` to `word`, where one is near; else empty.
std::string nearest(std::string_view word, std::span<const std::string> words);

}  // namespace orb::ctl
