#include "program/listing_options.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "trace/fields.h"

namespace orb::sim {
namespace {

/// As https://no-color.org asks for; a terminal that nothing is known of has none.
bool isColoured() {
  const char* const unwanted = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) != 0 && (unwanted == nullptr || *unwanted == '\0') &&
         terminal != nullptr && *terminal != '\0' && std::string_view(terminal) != "dumb";
}

/// A number such as 0x6501, or, for a message without a sub-id, 0x2B.
std::optional<message::Id> numberedMessage(std::string_view text) {
  constexpr int kBase = 16;
  constexpr std::size_t kDigitsOfId = 2;
  if (!text.starts_with("0x") && !text.starts_with("0X")) {
    return std::nullopt;
  }
  text.remove_prefix(2);
  message::Id id = 0;
  const auto [last, error] = std::from_chars(text.data(), text.data() + text.size(), id, kBase);
  if (error != std::errc() || last != text.data() + text.size()) {
    return std::nullopt;
  }
  return text.size() > kDigitsOfId ? id : static_cast<message::Id>(id << 8);
}

message::Id messageOf(const std::string& text) {
  const auto named = findMessage(text);
  if (const auto id = named ? named : numberedMessage(text)) {
    return *id;
  }
  throw CLI::ValidationError("--only: " + text +
                             " is no message; it has to be a number such as 0x6501, or a " +
                             "name such as set-timing, query-timing or timing");
}

}  // namespace

std::shared_ptr<ListingForm> addListingOptions(CLI::App& subcommand) {
  const auto form = std::make_shared<ListingForm>();
  form->colour = isColoured();
  subcommand.add_flag("--json", form->json, "Prints JSON, an object on each line");
  const auto only = [form](const std::vector<std::string>& messages) {
    std::transform(messages.begin(), messages.end(), std::inserter(form->only, form->only.end()),
                   messageOf);
  };
  subcommand
      .add_option_function<std::vector<std::string>>(
          "--only", only,
          "Prints only this message: 0x6501, or its name in scenarios, or the reply's, as in\n"
          "set-timing, query-timing and timing; may be given several times")
      ->type_name("ID")
      ->allow_extra_args(false);
  subcommand.add_flag("--no-nmea", form->withoutSentences, "Leaves out NMEA sentences");
  subcommand.add_flag("--wall-clock", form->wallClock,
                      "Prints the time of day, UTC, instead of seconds since the beginning");
  return form;
}

}  // namespace orb::sim
