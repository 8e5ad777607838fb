#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <string>

namespace orb::test {
namespace {

/// The named numbers of a header: `constexpr ... kName = 0x1234` or `kName{0x1234`.
std::map<std::string, std::string> numbersIn(const std::string& header) {
  std::ifstream file(std::string(ORB_SOURCE_FOLDER) + '/' + header);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::regex row(R"(constexpr [\w:]+ (k\w+)\W+(0x[0-9A-F]{4}))");
  std::map<std::string, std::string> numbers;
  for (std::sregex_iterator at(text.begin(), text.end(), row); at != std::sregex_iterator(); ++at) {
    numbers[at->str(1)] = at->str(2);
  }
  const std::regex constant("constexpr");
  const auto constants = std::sregex_iterator(text.begin(), text.end(), constant);
  EXPECT_EQ(std::distance(constants, {}), std::ssize(numbers)) << header << " has other rows";
  return numbers;
}

// The tables are written apart, so that a mistake in one of them does not hide in the other.
TEST(MessageIds, OfTheModelHaveTheNamesAndNumbersOfTheLibrarys) {
  const auto library = numbersIn("protocol/messages.h");
  EXPECT_EQ(numbersIn("simulator/model/message_ids.h"), library);
  EXPECT_EQ(library.at("kConfigureTiming"), "0x5400");
}

}  // namespace
}  // namespace orb::test
