#include "operation_table/operation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <optional>
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

/// What the page says of an operation. Of some, it says less.
struct Documented {
  std::string does;
  std::string line;  // what goes over it, as the page has it
  std::string result;
  std::string toKnow;
};

/// A cell of a table as plain text.
std::string plain(std::string cell) {
  cell = std::regex_replace(cell, std::regex(R"(\[([^\]]*)\]\([^)]*\))"), "$1");
  cell = std::regex_replace(cell, std::regex(R"([`\\]|\*\*)"), "");
  return std::regex_replace(cell, std::regex("^ +| +$"), "");
}

/// A member as it is called: what stands in front of a parameter's name is its type.
std::string withoutTypes(const std::string& declaration) {
  return std::regex_replace(declaration, std::regex(R"(([(,] ?)[^,()]*[ *&](\w+)(?=[,)]))"),
                            "$1$2");
}

/// The cells of a row; none where the line is no row that starts like this.
std::vector<std::string> cellsOf(const std::string& line, const std::string& start) {
  std::vector<std::string> cells;
  if (line.rfind(start, 0) == 0) {
    std::istringstream text(line.substr(1));
    for (std::string cell; std::getline(text, cell, '|');) {
      cells.push_back(cell);
    }
  }
  return cells;
}

std::map<std::string, Documented> documented() {
  std::map<std::string, Documented> result;
  std::ifstream page(ORB_OPERATIONS_PAGE);
  std::string toKnow;
  for (std::string line; std::getline(page, line);) {
    const std::vector<std::string> cells = cellsOf(line, "| `");
    if (cells.empty()) {
      continue;
    }
    Documented row{.does = cells.size() == 5 || cells.size() == 2 ? plain(cells[1]) : "",
                   .line = "",
                   .result = "",
                   .toKnow = ""};
    if (cells.size() == 5) {
      toKnow = plain(cells[4]) == "as above" ? toKnow : plain(cells[4]);
      row.line = cells[2];
      row.result = plain(cells[3]);
      row.toKnow = toKnow;
    }
    const std::regex signature(R"((\w+\([^`]*\))(?: const)?`)");
    for (std::sregex_iterator match(cells[0].begin(), cells[0].end(), signature), end; match != end;
         ++match) {
      result[withoutTypes((*match)[1])] = row;
    }
  }
  return result;
}

/// The longest time of what goes over the line: an arrow is a reply that is awaited. Nothing where
/// the page refers to other operations.
std::optional<LongestTime> longestTimeOf(const std::string& line) {
  const std::regex wait("([0-9]+) ms");
  LongestTime time;
  for (std::sregex_iterator match(line.begin(), line.end(), wait), end; match != end; ++match) {
    time.milliseconds += std::stoi((*match)[1]);
  }
  const std::string arrow = "\u2192";
  for (std::size_t at = 0; (at = line.find(arrow, at)) != std::string::npos; at += arrow.size()) {
    ++time.awaitedReplies;
  }
  const std::string words =
      std::regex_replace(std::regex_replace(line, std::regex("`[^`]*`"), ""), wait, "");
  const bool isWhole =
      line.find('`') != std::string::npos && words.find_first_not_of(" ,;") == std::string::npos;
  return isWhole ? std::optional(time) : std::nullopt;
}

void expectSame(const LongestTime& time, const LongestTime& expected, std::string_view operation) {
  EXPECT_EQ(time.awaitedReplies, expected.awaitedReplies) << operation;
  EXPECT_EQ(time.milliseconds, expected.milliseconds) << operation;
}

/// The steps that the page has for each sequence, as it calls them.
std::map<std::string, std::vector<std::string>> sequences() {
  std::map<std::string, std::vector<std::string>> result;
  std::ifstream page(ORB_OPERATIONS_PAGE);
  std::string sequence;
  const std::regex step(R"( `(\w+\([^)]*\))`.*)");
  for (std::string line; std::getline(page, line);) {
    if (line.rfind('#', 0) == 0) {
      sequence = line.rfind("### ", 0) == 0 ? line.substr(4) : "";
    }
    const std::vector<std::string> cells = cellsOf(line, "| ");
    std::smatch match;
    if (cells.size() == 4 && std::isdigit(cells[0][1]) != 0 &&
        std::regex_match(cells[1], match, step)) {
      result[sequence].push_back(match[1]);
    }
  }
  return result;
}

/// The row for a call such as "setDynamicModel(1, 1)".
const Operation* calledBy(const std::string& call) {
  const std::size_t bracket = call.find('(');
  const auto commas = std::count(call.begin(), call.end(), ',');
  const bool hasArguments = call[bracket + 1] != ')';
  return findOperation(call.substr(0, bracket),
                       hasArguments ? static_cast<std::size_t>(commas) + 1 : 0);
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
    if (!entry->second.result.empty()) {
      EXPECT_EQ(operation.toKnow, entry->second.toKnow) << operation.name;
    }
  }
}

TEST(Operations, TakeAsLongAsThePageSays) {
  int compared = 0;
  for (const auto& [signature, row] : documented()) {
    const auto time = longestTimeOf(row.line);
    const auto operation = std::find_if(operations().begin(), operations().end(),
                                        [&, &signature = signature](const Operation& candidate) {
                                          return signatureOf(candidate) == signature;
                                        });
    if (time && operation != operations().end()) {
      expectSame(operation->longest, *time, signature);
      ++compared;
    }
  }
  EXPECT_GT(compared, 70);
}

TEST(Operations, ThatAskTheInventoryTakeAsLongAsThePageSays) {
  const std::regex limit("for ([0-9]+) s at most");
  int compared = 0;
  for (const auto& [signature, row] : documented()) {
    if (std::smatch match; std::regex_search(row.does, match, limit)) {
      const Operation* const operation = findOperation(signature.substr(0, signature.find('(')), 1);
      ASSERT_NE(operation, nullptr) << signature;
      expectSame(operation->longest, {0, std::stoi(match[1]) * 1000}, signature);
      ++compared;
    }
  }
  EXPECT_EQ(compared, 2);
}

TEST(Operations, OfSeveralStepsTakeAsLongAsTheseTogether) {
  const auto all = sequences();
  EXPECT_EQ(all.size(), 3U);
  for (const auto& [name, steps] : all) {
    LongestTime sum;
    for (const std::string& step : steps) {
      const Operation* const operation = calledBy(step);
      ASSERT_NE(operation, nullptr) << step;
      sum.awaitedReplies += operation->longest.awaitedReplies;
      sum.milliseconds += operation->longest.milliseconds;
    }
    expectSame(findOperation(name, 0)->longest, sum, name);
  }
}

}  // namespace
}  // namespace orb::test
