#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <memory>

#include "base/plain_text.h"
#include "orb-gnss/catalogue.h"
#include "orbctl/command.h"
#include "orbctl/failure.h"
#include "orbctl/reply_fields.h"

namespace orb::ctl {
namespace {

/// Bytes in hexadecimal, with blanks between them or without.
std::string bytesFrom(const std::vector<std::string>& words) {
  std::string bytes;
  for (const std::string& word : words) {
    if (word.empty() || word.size() % 2 != 0) {
      throw Failure(ExitStatus::WrongUse, fmt::format("'{}' is no bytes in hexadecimal", word),
                    "as in: orbctl raw 64 07");
    }
    for (std::size_t i = 0; i < word.size(); i += 2) {
      unsigned int byte = 0;
      const char* const end = word.data() + i + 2;
      if (std::from_chars(word.data() + i, end, byte, 16).ptr != end) {
        throw Failure(ExitStatus::WrongUse, fmt::format("'{}' is no bytes in hexadecimal", word),
                      "as in: orbctl raw 64 07");
      }
      bytes += static_cast<char>(byte);
    }
  }
  return bytes;
}

constexpr char kAboutIds[] = "ids from 62 to 6F have two bytes, as 64 07; all others one, as 2F";

bool hasSubId(unsigned char id) { return id >= 0x62 && id <= 0x6F; }

std::string describeMessage(const std::string& payload) {
  const auto at = [&](std::size_t i) {
    return i < payload.size() ? static_cast<unsigned char>(payload[i])
                              : static_cast<unsigned char>(0);
  };
  return orbGetMessageDescription({at(0), hasSubId(at(0)) ? at(1) : static_cast<unsigned char>(0)},
                                  0);
}

constexpr unsigned char kRefused = 0x84;

/// A reply in words and as data.
std::pair<std::string, Json> describeReply(const std::string& payload) {
  std::string text = fmt::format("< {}  {}\n", hex(payload), plain(describeMessage(payload)));
  Json fields = Json::array();
  for (const ReplyField& field : fieldsOf(payload)) {
    text += fmt::format("    {} = {}{}{}\n", field.name, plain(field.value),
                        field.unit.empty() ? "" : " ", field.unit);
    fields.push_back({{"name", field.name}, {"value", field.value}, {"unit", field.unit}});
  }
  return {text,
          {{"bytes", hex(payload)},
           {"description", describeMessage(payload)},
           {"fields", std::move(fields)}}};
}

void raw(Session& session, const Options& options, const std::string& payload) {
  Json replies = Json::array();
  std::string text = fmt::format("> {}  {}\n", hex(payload), plain(describeMessage(payload)));
  bool isRefused = false;
  for (const std::string& reply : session.exchange(payload)) {
    isRefused |= static_cast<unsigned char>(reply.front()) == kRefused;
    auto [words, data] = describeReply(reply);
    text += words;
    replies.push_back(std::move(data));
  }
  const Json whole{{"sent", hex(payload)}, {"replies", std::move(replies)}};
  if (!isRefused || !options.isJson) {
    show(options, "raw", whole, text);
  }
  if (isRefused) {
    throw Failure(ExitStatus::Refused, "the receiver refuses this message",
                  "compare its length with: orbctl messages; else the firmware does not know it", 0,
                  oneLine(whole));
  }
}

void messages(const Options& options, const std::vector<std::string>& words) {
  const std::string wanted = bytesFrom(words);
  Json data = Json::array();
  std::string text;
  for (const ORBMessageInfo& row : ORBMessages) {
    const bool isMarker = row.msgId.id == 0 || row.msgId.id == 0xFF;
    const bool isWanted =
        wanted.empty() ||
        (row.msgId.id == static_cast<unsigned char>(wanted[0]) &&
         (wanted.size() < 2 || row.msgId.subId == static_cast<unsigned char>(wanted[1])));
    if (isMarker || !isWanted) {
      continue;
    }
    // Two descriptions have bytes that are no text.
    std::string description;
    for (const char c : std::string(row.description)) {
      description += c >= ' ' && c <= '~' ? c : '?';
    }
    const std::string length = row.minLength == row.maxLength
                                   ? std::to_string(row.minLength)
                                   : fmt::format("{}-{}", row.minLength, row.maxLength);
    const std::string id = hasSubId(row.msgId.id)
                               ? fmt::format("{:02X} {:02X}", row.msgId.id, row.msgId.subId)
                               : fmt::format("{:02X}", row.msgId.id);
    data.push_back({{"id", id},
                    {"shortest", row.minLength},
                    {"longest", row.maxLength},
                    {"description", description}});
    text += fmt::format("{:<5}  {:>7}  {}\n", id, length, description);
  }
  if (data.empty()) {
    throw Failure(ExitStatus::WrongUse,
                  fmt::format("the catalogue has no message {}", fmt::join(words, " ")),
                  fmt::format("{}; see all with: orbctl messages", kAboutIds));
  }
  show(options, "messages", {{"messages", data}}, text);
}

}  // namespace

void addMessageCommands(CLI::App& app, Action& chosen) {
  const auto words = std::make_shared<std::vector<std::string>>();

  CLI::App* command = addCommand(
      app, "raw", "Sends a message, and shows what answers", chosen,
      [=](Session& session, const Options& options) { raw(session, options, bytesFrom(*words)); });
  command
      ->add_option("ID", *words,
                   "Id, sub-id if it has one (62 to 6F do) and body, in\nhexadecimal: 64 07")
      ->required();

  command = addCommand(app, "messages", "The catalogue of messages", chosen,
                       [=](Session&, const Options& options) { messages(options, *words); });
  command->add_option("ID", *words, "Those of this id, in hexadecimal: 64, or 64 07");
}

}  // namespace orb::ctl
