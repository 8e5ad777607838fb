#include "operation_table/operation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include "operation_table/receiver.h"

namespace orb::test {
namespace {

std::string signatureOf(const Operation& operation) {
  std::string text(operation.name);
  text += "(";
  for (const Argument& argument : operation.arguments()) {
    text += (text.back() == '(' ? "" : ", ") + std::string(argument.name);
  }
  return text + ")";
}

TEST(Operations, AreTheSixtyOfEveryControllerFirst) {
  ASSERT_GT(operations().size(), 60U);
  EXPECT_EQ(operations()[0].name, "Init");
  EXPECT_EQ(operations()[59].name, "gpsObtSetMsgType");
  EXPECT_EQ(operations()[60].name, "setAntennaPower");
}

TEST(Operations, HaveNamesOfTheirOwn) {
  std::map<std::pair<std::string_view, std::size_t>, int> count;
  for (const Operation& operation : operations()) {
    EXPECT_EQ(++count[std::pair(operation.name, operation.argumentCount)], 1) << operation.name;
    EXPECT_EQ(findOperation(operation.name, operation.argumentCount), &operation);
  }
}

TEST(Operations, AreFoundByNameAndNumberOfArguments) {
  EXPECT_EQ(findOperation("setGnssSystem", 2)->argumentCount, 2U);
  EXPECT_EQ(findOperation("setGnssSystem", 3), nullptr);
  EXPECT_EQ(findOperation("noSuchThing", 0), nullptr);
}

TEST(Operations, RefuseOtherArguments) {
  Receiver receiver;
  std::vector<Value> none;
  EXPECT_THROW(findOperation("setMinCNo", 1)->call(receiver, none), std::invalid_argument);
  std::vector<Value> text = {std::string("10")};
  EXPECT_THROW(findOperation("setMinCNo", 1)->call(receiver, text), std::invalid_argument);
}

/// What the page says of an operation, by its signature: what it does, result, what is to know.
struct Documented {
  std::string does;
  std::string result;
};

/// A cell of a table as plain text.
std::string plain(std::string cell) {
  cell = std::regex_replace(cell, std::regex(R"(\[([^\]]*)\]\([^)]*\))"), "$1");
  cell = std::regex_replace(cell, std::regex(R"([`\\]|\*\*)"), "");
  return std::regex_replace(cell, std::regex("^ +| +$"), "");
}

std::map<std::string, Documented> documented() {
  std::map<std::string, Documented> result;
  std::ifstream page(ORB_OPERATIONS_PAGE);
  for (std::string line; std::getline(page, line);) {
    if (line.rfind("| `", 0) != 0) {
      continue;
    }
    std::vector<std::string> cells;
    std::istringstream text(line.substr(1));
    for (std::string cell; std::getline(text, cell, '|');) {
      cells.push_back(cell);
    }
    const bool hasLine = cells.size() == 5;
    const std::regex signature(R"(`(\w+\([^`]*\))`)");
    for (std::sregex_iterator match(cells[0].begin(), cells[0].end(), signature), end; match != end;
         ++match) {
      result[(*match)[1]] = {hasLine || cells.size() == 2 ? plain(cells[1]) : "",
                             hasLine ? plain(cells[3]) : ""};
    }
  }
  return result;
}

// The last row is not the library's: it is orbctl's exchange of any message.
TEST(Operations, AreAllOnThePageAndAsItSays) {
  const std::map<std::string, Documented> page = documented();
  const std::map<std::string, unsigned int> kinds = {
      {"query", 12}, {"setting", 13}, {"order", 8}, {"nothing", 0}, {"0, always", 0}};
  for (const Operation& operation : operations().first(operations().size() - 1)) {
    const auto entry = page.find(signatureOf(operation));
    ASSERT_NE(entry, page.end()) << signatureOf(operation);
    if (!entry->second.does.empty() && operation.does != "does nothing") {
      EXPECT_EQ(operation.does, entry->second.does) << operation.name;
    }
    if (const auto kind = kinds.find(entry->second.result); kind != kinds.end()) {
      EXPECT_EQ(operation.resultBits, kind->second) << operation.name;
    }
  }
}

}  // namespace
}  // namespace orb::test
