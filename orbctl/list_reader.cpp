#include "orbctl/list_reader.h"

#include <fmt/format.h>

#include "orbctl/complaint.h"

namespace orb::ctl {

Json ListReader::read(std::string_view name, Json (*function)(Session& session)) {
  try {
    return function(session_);
  } catch (const Failure& failure) {
    const bool isUnanswered = failure.status() == ExitStatus::NoReply;
    // A line that loses bytes can lose one detection too.
    const bool isThere = isUnanswered && (session_.looksAgain() || session_.looksAgain());
    if (!isThere && failure.status() != ExitStatus::Refused) {
      throw;
    }
    complain(fmt::format("orbctl: {} is left out: {}\n", name, failure.what()));
    missing_.emplace_back(name);
    first_ = first_ ? first_ : failure;
    return {};
  }
}

void ListReader::show(const Options& options, const std::string& command, const char* name,
                      const Json& data, const std::string& text) const {
  if (!first_ || !options.isJson) {
    ctl::show(options, command, data, text);
  }
  if (first_) {
    throw Failure(first_->status(), fmt::format("not read: {}", fmt::join(missing_, ", ")),
                  first_->hint(), first_->resultBits(), oneLine({{name, data}}));
  }
}

}  // namespace orb::ctl
