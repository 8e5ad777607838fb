#pragma once

#include <optional>
#include <string>
#include <vector>

#include "orbctl/command.h"
#include "orbctl/failure.h"
#include "orbctl/settings.h"

namespace orb::ctl {

/// Reads settings for a list of many: one that is not answered, as by older firmware, does not keep
/// the others from being shown.
class SettingReader {
 public:
  /// Throws Failure where there is no module or no receiver.
  explicit SettingReader(Session& session) : session_(session) { session.requireReceiver(); }

  /// Null, and told on standard error, where the receiver does not answer. Throws Failure where it
  /// is not there any more.
  Json read(const Setting& setting);

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
