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

message::Id messageOf(const std::string& text) {
  constexpr int kBase = 16;
  if (const auto id = findMessage(text)) {
    return *id;
  }
  message::Id id = 0;
  const bool isHex = text.starts_with("0x") || text.starts_with("0X");
  const char* const end = text.data() + text.size();
  if (isHex) {
    const auto [last, error] = std::from_chars(text.data() + 2, end, id, kBase);
    if (error == std::errc() && last == end) {
      return id;
    }
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
