#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <string>

#include "model/commands.h"

namespace orb::test {
namespace {

using Numbers = std::map<std::string, unsigned long>;

/// The named numbers of a header: `constexpr ... kName = 0x1234` or `kName{0x1234`.
Numbers numbersIn(const std::string& header) {
  std::ifstream file(std::string(ORB_SOURCE_FOLDER) + '/' + header);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::regex row(R"(constexpr [\w:]+ (k\w+)\W+(0x[0-9A-F]{4}))");
  Numbers numbers;
  for (std::sregex_iterator at(text.begin(), text.end(), row); at != std::sregex_iterator(); ++at) {
    numbers[at->str(1)] = std::stoul(at->str(2), nullptr, 16);
  }
  return numbers;
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
  Numbers model = numbersIn("simulator/model/message_ids.h");
  for (unsigned int id = 0; id <= 0xFFFF; ++id) {
    if (const auto* const command = sim::findCommand(static_cast<sim::message::Id>(id))) {
      const std::string name = libraryName(std::string(command->name));
      model[name] = id;
      if (command->report != nullptr) {
        model[std::regex_replace(name, std::regex("^kQuery"), "k")] = command->reply;
      }
    }
  }
  const auto library = numbersIn("protocol/messages.h");
  EXPECT_EQ(model, library);
  EXPECT_EQ(library.at("kSetTiming"), 0x5400U);
}

}  // namespace
}  // namespace orb::test
