#include "base/toml/table_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "base/toml/text_file.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Problems = std::vector<std::string>;
using Read = std::function<void(TableReader&)>;

/// The problems that reading a text brings up.
Problems problemsOf(const std::string& text, const Read& read,
                    const TableName& name = TableName::path("")) {
  ProblemList problems("f");
  const auto table = parseToml(text, problems);
  TableReader reader(table.value(), name, problems);
  read(reader);
  return problems.lines();
}

constexpr Word<int> kColours[] = {{"red", 1}, {"green", 2}, {"blue", 3}};

/// A value of each type.
struct Values {
  bool flag = false;
  std::string text = "unchanged";
  double number = 7;
  std::uint8_t integer = 7;
  std::int32_t scaled = 7;
  std::chrono::milliseconds duration{7};
  int word = 7;
  std::vector<int> words = {7};

  Read reading(bool isFound) {
    return [this, isFound](TableReader& table) {
      EXPECT_EQ(table.flag("flag", flag), isFound);
      EXPECT_EQ(table.text("text", text), isFound);
      EXPECT_EQ(table.number("number", number, 0, 2), isFound);
      EXPECT_EQ(table.integer("integer", integer, 0), isFound);
      table.scaled("scaled", scaled, 100, 0, 2);
      table.duration("duration", duration, 0s, 2s);
      table.word("word", word, kColours);
      table.words("words", words, kColours);
      table.refuseUnknownKeys();
    };
  }
  bool operator==(const Values&) const = default;
};

TEST(TableReader, ReadsEachType) {
  Values values;
  const char* const kText =
      "flag = true\ntext = 'a'\nnumber = 2\ninteger = 255\nscaled = 1.25\nduration = '1.5s'\n"
      "word = 'green'\nwords = ['blue', 'red']\n";
  EXPECT_THAT(problemsOf(kText, values.reading(true)), IsEmpty());
  EXPECT_TRUE(values == (Values{true, "a", 2, 255, 125, 1500ms, 2, {3, 1}}));
}

TEST(TableReader, LeavesWhatIsNotThereOrWrong) {
  for (const char* text : {"",
                           "flag = 1\ntext = 1\nnumber = 'a'\ninteger = -1\nscaled = 3\n"
                           "duration = '3s'\nword = 'pink'\nwords = 1\n"}) {
    Values values;
    EXPECT_EQ(problemsOf(text, values.reading(false)).size(), *text == '\0' ? 0 : 8) << text;
    EXPECT_TRUE(values == Values()) << text;
  }
}

TEST(TableReader, NamesLineKeyAndWhatIsAccepted) {
  static std::string text;
  static double number = 0;
  static std::uint64_t integer = 0;
  static std::chrono::seconds duration{0};
  static int word = 0;
  static std::vector<int> words;
  const Read readText = [](TableReader& table) { table.text("a", text, 3); };
  const Read readNumber = [](TableReader& table) { table.number("a", number, -0.5, 1e7); };
  const Read readInteger = [](TableReader& table) { table.integer("a", integer, 1); };
  const Read readDuration = [](TableReader& table) { table.duration("a", duration, 1s, 2min); };
  const Read readWord = [](TableReader& table) { table.word("a", word, kColours); };
  const Read readWords = [](TableReader& table) { table.words("a", words, kColours); };
  const Read readTable = [](TableReader& table) { table.table("a", [](TableReader&) {}); };
  const Read readTables = [](TableReader& table) { table.eachTable("a", [](TableReader&) {}); };
  const std::tuple<const char*, Read, const char*> rows[] = {
      {"a = 1.5", readText, "f:1: a: is a fraction; it has to be a text in quotes"},
      {"a = 'four'", readText, "f:1: a: has 4 bytes; it has to be a text of at most 3"},
      {"a = []", readNumber, "f:1: a: is an array; it has to be a number"},
      {"a = nan", readNumber, "f:1: a: is nan; it has to be from -0.5 to 1e+07"},
      {"\na = -0.6", readNumber, "f:2: a: is -0.6; it has to be from -0.5 to 1e+07"},
      {"a = 1979-05-27", readInteger, "f:1: a: is a date or a time; it has to be an integer"},
      {"a = 0", readInteger, "f:1: a: is 0; it has to be from 1 to 9223372036854775807"},
      {"a = 'soon'", readDuration,
       "f:1: a: is \"soon\"; it has to be a number and its unit (ns, us, ms, s, min or h), such as "
       "\"250ms\""},
      {"a = '121s'", readDuration, "f:1: a: is \"121s\"; it has to be from 1s to 2min"},
      {"a = '1.5s'", readDuration, "f:1: a: is \"1.5s\"; it has to be a multiple of 1s"},
      {"a = 'pink'", readWord, "f:1: a: is \"pink\"; it has to be \"red\", \"green\" or \"blue\""},
      {"a = 'red'", readWords, "f:1: a: is a text; it has to be an array of texts"},
      {"a = ['red',\n7]", readWords, "f:2: a: is an integer; it has to be a text in quotes"},
      {"a = true", readTable, "f:1: a: is true or false; it has to be a table [a]"},
      {"[a]", readTables, "f:1: a: is a table; it has to be tables [[a]]"},
      {"a = [\n 1 ]", readTables, "f:2: a: is an integer; it has to be one of the tables [[a]]"},
      {"\n[a]\nb = 1", readTable, "f:3: a.b: unknown key; it has to be "}};
  for (const auto& [toml, read, problem] : rows) {
    EXPECT_THAT(problemsOf(toml, read), ElementsAre(problem)) << toml;
  }
}

TEST(TableReader, NamesTheTablesInsideByTheirPath) {
  const Read read = [](TableReader& file) {
    file.table("outer", [](TableReader& outer) {
      outer.eachTable("inner", [](TableReader& inner) { inner.require({"a"}); });
    });
  };
  EXPECT_THAT(problemsOf("[[outer.inner]]\nb = 1\n[[outer.inner]]\na = 1\n", read),
              ElementsAre("f:1: outer.inner.a: is missing; it has to be there",
                          "f:2: outer.inner.b: unknown key; it has to be a"));
}

TEST(TableReader, NamesATableInWordsWhereItIsToldTo) {
  const Read read = [](TableReader& table) {
    std::uint32_t integer = 0;
    table.require({"a", "b"});
    table.integer("a", integer, 1);
    table.refuse("a", "is odd");
    table.refuseUnknownKeys();
  };
  EXPECT_THAT(problemsOf("a = 0\nc = 1\n", read, TableName::words("the thing")),
              ElementsAre("f:1: the thing has no \"b\"",
                          "f:1: \"a\" is 0; it has to be from 1 to 4294967295", "f:1: \"a\" is odd",
                          "f:2: unknown key \"c\" in the thing"));
}

TEST(TableReader, ListsTheKeysThatItHasBeenAskedForOnce) {
  const Read read = [](TableReader& table) {
    EXPECT_TRUE(table.has("a"));
    EXPECT_FALSE(table.has("b"));
    EXPECT_NE(table.find("a"), nullptr);
    table.find("c");
    table.refuseUnknownKeys();
  };
  EXPECT_THAT(problemsOf("a = 0\nd = 1\n", read),
              ElementsAre("f:2: d: unknown key; it has to be a, b or c"));
}

}  // namespace
}  // namespace orb::test
