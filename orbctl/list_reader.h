#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orbctl/command.h"
#include "orbctl/failure.h"
#include "orbctl/settings.h"

namespace orb::ctl {

/// Reads a list of many things: one that is not answered, as by older firmware, does not keep the
/// others from being shown.
class ListReader {
 public:
  /// Throws Failure where there is no module or no receiver.
  explicit ListReader(Session& session) : session_(session) { session.requireReceiver(); }

  /// What `function` reads of the receiver: null, and told on standard error with its name, where
  /// the receiver does not answer. Throws Failure where it is not there any more.
  Json read(std::string_view name, Json (*function)(Session& session));

  /// Shows what was read. Throws Failure where something was not; as JSON, that has `data` as its
  /// member `name`.
  void show(const Options& options, const std::string& command, const char* name, const Json& data,
            const std::string& text) const;

 private:
  Session& session_;
  std::vector<std::string> missing_;
  std::optional<Failure> first_;
};

}  // namespace orb::ctl
