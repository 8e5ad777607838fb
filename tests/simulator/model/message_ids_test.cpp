#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <string>

#include "model/commands.h"

namespace orb::test {
namespace {

/// Id, length of the payload, and id of the reply; 0 where there is none.
using Numbers = std::array<unsigned long, 3>;
using Messages = std::map<std::string, Numbers>;

/// The messages that a header names: `constexpr ... kName = 0x1234` or, of a request,
/// `kName{0x1234, length, kReply}`.
Messages messagesIn(const std::string& header) {
  std::ifstream file(std::string(ORB_SOURCE_FOLDER) + '/' + header);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::regex row(R"(constexpr [\w:]+ (k\w+)\W+(0x[0-9A-F]{4})(?:, (\d+)(?:, (k\w+))?)?)");
  Messages messages;
  for (std::sregex_iterator at(text.begin(), text.end(), row); at != std::sregex_iterator(); ++at) {
    const bool isAnswered = !at->str(4).empty() && at->str(4) != "kAcknowledged";
    messages[at->str(1)] = {std::stoul(at->str(2), nullptr, 16), std::stoul('0' + at->str(3)),
                            isAnswered ? messages.at(at->str(4))[0] : 0};
  }
  return messages;
}

/// The library's name for a command: kSetDopMask for "set-dop-mask".
std::string libraryName(const std::string& name) {
  std::string result = "k";
  for (std::size_t at = 0; at < name.size(); ++at) {
    const bool isFirst = at == 0 || name[at - 1] == '-';
    if (name[at] != '-') {
      result += isFirst ? static_cast<char>(std::toupper(name[at])) : name[at];
    }
  }
  return result;
}

// The tables are written apart, so that a mistake in one of them does not hide in the other.
TEST(MessageIds, OfTheModelHaveTheNamesAndNumbersOfTheLibrarys) {
  Messages model = messagesIn("simulator/model/message_ids.h");
  for (unsigned int id = 0; id <= 0xFFFF; ++id) {
    if (const auto* const command = sim::findCommand(static_cast<sim::message::Id>(id))) {
      const std::string name = libraryName(std::string(command->name));
      model[name] = {id, command->length, command->reply};
      if (command->report != nullptr) {
        model[std::regex_replace(name, std::regex("^kQuery"), "k")] = {command->reply, 0, 0};
      }
    }
  }
  const Messages library = messagesIn("protocol/messages.h");
  EXPECT_EQ(model, library);
  EXPECT_EQ(library.at("kSetTiming"), (Numbers{0x5400, 31, 0}));
  EXPECT_EQ(library.at("kQueryTiming"), (Numbers{0x4400, 1, 0xC200}));
}

}  // namespace
}  // namespace orb::test
