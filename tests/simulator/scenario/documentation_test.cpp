#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <stdexcept>
#include <string>

#include "model/commands.h"
#include "orb-sim/scenario.h"

// The page on scenarios, against what the loader accepts.

namespace orb::test {
namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;

std::string page() {
  std::ifstream file(ORB_SIM_SCENARIOS_PAGE);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The part of the page under a heading.
std::string section(const std::string& heading) {
  const std::string text = page();
  const auto start = text.find("\n### " + heading + '\n');
  return start == std::string::npos ? ""
                                    : text.substr(start, text.find("\n### ", start + 1) - start);
}

std::set<std::string> matches(const std::string& text, const std::string& pattern) {
  std::set<std::string> found;
  const std::regex regex(pattern);
  for (std::sregex_iterator at(text.begin(), text.end(), regex); at != std::sregex_iterator();
       ++at) {
    found.insert(at->str(1));
  }
  return found;
}

/// What the loader names as accepted where it meets something else.
std::set<std::string> acceptedInstead(const std::string& scenario) {
  try {
    sim::parseScenario(scenario, "f");
  } catch (const std::runtime_error& error) {
    const std::string problem = error.what();
    return matches(problem.substr(problem.rfind("it has to be ") + 13), "([a-z0-9-]{3,}|at)");
  }
  return {"(nothing was wrong)"};
}

/// The keys at the start of the rows of a section's tables.
std::set<std::string> documentedKeys(const std::string& text) {
  std::set<std::string> keys;
  for (const std::string& row : matches(text, "\n\\| (`[^|]*)\\|")) {
    keys.merge(matches(row, "`([^`]+)`"));
  }
  return keys;
}

TEST(ScenarioDocumentation, DescribesTheKeysOfEachTable) {
  for (const std::string table :
       {"device", "receiver.nmea-intervals", "receiver.dop-mask", "receiver.timing", "position",
        "solution", "time", "start", "line", "settings", "survey"}) {
    EXPECT_EQ(documentedKeys(section('[' + table + ']')), acceptedInstead(table + ".zzz = 1"));
  }
  EXPECT_EQ(documentedKeys(section("[[satellite]]")),
            acceptedInstead("satellite = [ { constellation = 'gps', number = 1, zzz = 1 } ]"));
  EXPECT_EQ(documentedKeys(section("[[event]]")),
            acceptedInstead("event = [ { at = '0s', rate = 1, zzz = 1 } ]"));
}

TEST(ScenarioDocumentation, DescribesTheReceiversKeys) {
  std::set<std::string> keys = acceptedInstead("receiver.zzz = 1");
  for (const char* table : {"nmea-intervals", "dop-mask", "timing"}) {
    EXPECT_EQ(keys.erase(table), 1) << table << " has a section of its own";
  }
  EXPECT_EQ(documentedKeys(section("[receiver]")), keys);
}

TEST(ScenarioDocumentation, DescribesTheKeysOfATrack) {
  std::set<std::string> keys =
      acceptedInstead("track.waypoint = [ { at = '0s', latitude = 1, longitude = 1, zzz = 1 } ]");
  keys.insert("repeats");
  EXPECT_EQ(documentedKeys(section("[track]")), keys);
}

TEST(ScenarioDocumentation, DescribesTheKeysAtTheTop) {
  const std::string text = page();
  for (const std::string& key : acceptedInstead("zzz = 1")) {
    EXPECT_THAT(text,
                AnyOf(HasSubstr("\n### [" + key + "]\n"), HasSubstr("\n### [[" + key + "]]\n"),
                      HasSubstr("\n| `" + key + "` |")));
  }
}

TEST(ScenarioDocumentation, DescribesTheKeysAndKindsOfAFault) {
  std::set<std::string> names = acceptedInstead("fault = [ { kind = 'silence', zzz = 1 } ]");
  names.merge(acceptedInstead("fault = [ { kind = 'zzz' } ]"));
  std::string text = section("[[fault]]");
  EXPECT_EQ(documentedKeys(text.substr(0, text.find("Names of messages"))), names);
}

TEST(ScenarioDocumentation, NamesEachMessageThatTheReceiverKnows) {
  const std::string text = section("[[fault]]");
  std::size_t known = 0;
  for (std::uint32_t id = 0; id <= 0xFFFF; ++id) {
    if (const sim::Command* command = sim::findCommand(static_cast<std::uint16_t>(id))) {
      ++known;
      EXPECT_THAT(text, HasSubstr('`' + std::string(command->name) + '`'));
      EXPECT_EQ(sim::findCommand(command->name), command) << "the name is that of one message";
    }
  }
  EXPECT_EQ(known, 44);
  EXPECT_EQ(sim::findCommand("set-nothing"), nullptr);
}

TEST(ScenarioDocumentation, ListsTheReadyScenarios) {
  const std::string text = page();
  for (const auto& entry : std::filesystem::directory_iterator(ORB_SIM_SCENARIOS)) {
    EXPECT_THAT(text, HasSubstr("\n| `" + entry.path().stem().string() + "` |"));
  }
}

}  // namespace
}  // namespace orb::test
