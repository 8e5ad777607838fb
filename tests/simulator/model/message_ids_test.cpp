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

/// Where the library does not name a message as scenarios do.
const std::map<std::string, std::string> kOtherNames{
    {"soft-reset", "restart-system"},
    {"set-serial-port", "set-up-serial-port"},
    {"set-output-type", "select-output-type"},
    {"set-pps-output", "configure-pps-output-mode"},
    {"set-nmea-intervals", "configure-extended-nmea"},
    {"set-interference-detection", "configure-interference"},
    {"set-pps-pulse-width", "configure-pulse-width"},
    {"query-software-revision", "query-revision"},
    {"query-pps-output", "query-pps-output-mode"},
    {"query-nmea-intervals", "query-extended-nmea"},
    {"query-interference-detection", "query-interference"},
    {"query-pps-pulse-width", "query-pulse-width"},
};

/// The library's name for a command: kConfigureDopMask for "set-dop-mask".
std::string libraryName(std::string name) {
  const auto other = kOtherNames.find(name);
  if (other != kOtherNames.end()) {
    name = other->second;
  } else if (name != "set-power-mode" && name != "set-factory-defaults") {
    name = std::regex_replace(name, std::regex("^set-"), "configure-");
  }
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
  EXPECT_EQ(library.at("kConfigureTiming"), 0x5400U);
}

}  // namespace
}  // namespace orb::test
