#include "inventoryd/inventory_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/files.h"
#include "support/temporary_folder.h"

namespace orb::test {
namespace {

using inventory::InventoryFile;
using inventory::Module;
using inventory::parseInventory;
using inventory::readInventoryFile;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

std::vector<std::string> problemsOf(const std::string& text) {
  return parseInventory(text, "f").problems;
}

TEST(InventoryFile, HoldsWhatIsWritten) {
  const InventoryFile file = parseInventory(R"([[module]]
location = 1
i2c-bus = "i2c-3"
spi-device = "spidev1.0"
bars = [ { index = 2, address = 0xf0000000, size = 0x1000 } ]
[module.records]
HardwareSetId = "47205318-001"
Other = { type = 2, data = "x" }
[[module]]
location = 0
)",
                                            "f");
  EXPECT_THAT(file.problems, IsEmpty());
  ASSERT_EQ(file.inventory.size(), 2);
  const Module& module = file.inventory.at(1);
  EXPECT_EQ(module.i2cBus, "i2c-3");
  EXPECT_EQ(module.spiDevice, "spidev1.0");
  ASSERT_EQ(module.bars.size(), 1);
  EXPECT_EQ(module.bars[0].index, 2);
  EXPECT_EQ(module.bars[0].address, 0xf0000000);
  EXPECT_EQ(module.bars[0].size, 0x1000);
  ASSERT_EQ(module.records.size(), 2);
  EXPECT_EQ(module.records.at("HardwareSetId").type, 1);
  EXPECT_EQ(module.records.at("HardwareSetId").data, "47205318-001");
  EXPECT_EQ(module.records.at("Other").type, 2);
  EXPECT_EQ(module.records.at("Other").data, "x");
  const Module& bare = file.inventory.at(0);
  EXPECT_EQ(bare.i2cBus, "");
  EXPECT_EQ(bare.spiDevice, "");
  EXPECT_THAT(bare.bars, IsEmpty());
  EXPECT_THAT(bare.records, IsEmpty());
}

TEST(InventoryFile, MayBeEmpty) {
  EXPECT_THAT(problemsOf(""), IsEmpty());
  EXPECT_THAT(problemsOf("# nothing fitted\n"), IsEmpty());
  EXPECT_THAT(problemsOf("module = []\n"), IsEmpty());
}

TEST(InventoryFile, TakesTheLargestNumbers) {
  const InventoryFile file = parseInventory(R"([[module]]
location = 4294967295
bars = [ { index = 4294967295, address = 0x7fffffffffffffff, size = 0x7fffffffffffffff } ]
records.A = { type = 2147483647, data = "" }
)",
                                            "f");
  EXPECT_THAT(file.problems, IsEmpty());
  EXPECT_EQ(file.inventory.count(4294967295), 1);
}

TEST(InventoryFile, IsRefusedWithTheLineOfEachProblem) {
  const std::string module = "[[module]]\nlocation = 1\n";
  const std::string record = module + "[module.records]\n";
  const std::pair<std::string, std::vector<std::string>> files[] = {
      // Keys that are not known.
      {"\n\nmodul = 1\n", {"f:3: unknown key \"modul\" in the file"}},
      {module + "i2cbus = 'i2c-3'\n", {"f:3: unknown key \"i2cbus\" in the module"}},
      {module + "bars = [\n  { index = 0, address = 0, size = 1, width = 64 },\n]\n",
       {"f:4: unknown key \"width\" in the BAR"}},
      {record + "A = { type = 1, data = '', x = 1 }\n",
       {"f:4: unknown key \"x\" in the record \"A\""}},
      // Modules.
      {"[module]\nlocation = 1\n", {"f:1: each module has to stand under a heading [[module]]"}},
      {"module = 3\n", {"f:1: each module has to stand under a heading [[module]]"}},
      {"# one module\n[[module]]\ni2c-bus = 'i2c-3'\n", {"f:2: the module has no \"location\""}},
      {"[[module]]\nlocation = '1'\n", {"f:2: \"location\" is a text; it has to be an integer"}},
      {"[[module]]\nlocation = 1.0\n",
       {"f:2: \"location\" is a fraction; it has to be an integer"}},
      {"[[module]]\nlocation = -1\n",
       {"f:2: \"location\" is -1; it has to be from 0 to 4294967295"}},
      {"[[module]]\nlocation = 4294967296\n",
       {"f:2: \"location\" is 4294967296; it has to be from 0 to 4294967295"}},
      {module + module, {"f:4: location 1 already has a module"}},
      // Devices.
      {module + "i2c-bus = 3\n", {"f:3: \"i2c-bus\" is an integer; it has to be a text in quotes"}},
      {module + "i2c-bus = '/dev/i2c-3'\n",
       {"f:3: \"i2c-bus\" is \"/dev/i2c-3\"; it has to be a name below /dev, not a path"}},
      {module + "i2c-bus = 'i2c/3'\n",
       {"f:3: \"i2c-bus\" is \"i2c/3\"; it has to be a name below /dev, not a path"}},
      {module + "spi-device = '..'\n",
       {"f:3: \"spi-device\" is \"..\"; it has to be a name below /dev, not a path"}},
      {module + "spi-device = true\n",
       {"f:3: \"spi-device\" is true or false; it has to be a text in quotes"}},
      // BARs.
      {module + "bars = 2\n",
       {"f:3: \"bars\" is an integer; it has to be an array of { index, address, size }"}},
      {module + "bars = [ [] ]\n",
       {"f:3: an element of \"bars\" is an array; it has to be { index, address, size }"}},
      {module + "bars = [ {} ]\n",
       {"f:3: the BAR has no \"index\"", "f:3: the BAR has no \"address\"",
        "f:3: the BAR has no \"size\""}},
      {module + "bars = [ { index = -1, address = -1, size = 0 } ]\n",
       {"f:3: \"index\" is -1; it has to be from 0 to 4294967295",
        "f:3: \"address\" is -1; it has to be from 0 to 9223372036854775807",
        "f:3: \"size\" is 0; it has to be from 1 to 9223372036854775807"}},
      // Records.
      {module + "records = 1979-05-27\n",
       {"f:3: \"records\" is a date or a time; it has to be a table [module.records]"}},
      {record + "A = 1\n", {"f:4: \"A\" is an integer; it has to be a text in quotes"}},
      {record + "A = { type = 0, data = '' }\n",
       {"f:4: \"type\" is 0; it has to be from 1 to 2147483647"}},
      {record + "A = {}\n",
       {"f:4: the record \"A\" has no \"type\"", "f:4: the record \"A\" has no \"data\""}},
      {record + "A = \"a\\u0000b\"\n\"c\\u0000d\" = \"e\"\n",
       {"f:4: \"A\" holds a null character, which D-Bus cannot carry",
        "f:5: a record's name holds a null character, which D-Bus cannot carry"}},
      // Several problems.
      {"[[module]]\nrecords.A = 1\nlocation = true\nbogus = 1\n[[module]]\nspi-device = 0\n",
       {"f:2: \"A\" is an integer; it has to be a text in quotes",
        "f:3: \"location\" is true or false; it has to be an integer",
        "f:4: unknown key \"bogus\" in the module", "f:5: the module has no \"location\"",
        "f:6: \"spi-device\" is an integer; it has to be a text in quotes"}}};
  for (const auto& [text, problems] : files) {
    EXPECT_EQ(problemsOf(text), problems) << text;
  }
}

// The words of these come from the TOML parser; the place is what counts.
TEST(InventoryFile, NamesTheLineOfAnErrorInTheLanguage) {
  EXPECT_THAT(problemsOf("[[module]]\nlocation = \n"), ElementsAre(StartsWith("f:2: ")));
  EXPECT_THAT(problemsOf("[[module]]\nlocation = 1\nlocation = 2\n"),
              ElementsAre(StartsWith("f:3: ")));
  EXPECT_THAT(problemsOf("[[module]]\n\n# \xFF\n"), ElementsAre(StartsWith("f:3: ")));
  EXPECT_THAT(problemsOf("[[module]]\nlocation = 99999999999999999999\n"),
              ElementsAre(StartsWith("f:2: ")));
}

TEST(InventoryFile, ReportsEachProblemInOneLine) {
  for (const char* text : {"[[module]\n", "a = 'x\n", "a = \"\\q\"", "[[module]]\nlocation = 1 2\n",
                           "\"a\\nb\" = 1\n"}) {
    for (const std::string& problem : problemsOf(text)) {
      EXPECT_EQ(problem.find('\n'), std::string::npos) << problem;
    }
    EXPECT_EQ(problemsOf(text).size(), 1) << text;
  }
}

TEST(InventoryFile, IsReadFromItsPath) {
  const TemporaryFolder folder;
  const std::string path = folder / "inventory.toml";
  fill(path, "[[module]]\nlocation = 3\n");
  const InventoryFile file = readInventoryFile(path);
  EXPECT_THAT(file.problems, IsEmpty());
  EXPECT_EQ(file.inventory.count(3), 1);
}

TEST(InventoryFile, HasToBeReadable) {
  const TemporaryFolder folder;
  const std::string missing = folder / "missing.toml";
  EXPECT_THAT(readInventoryFile(missing).problems,
              ElementsAre(missing + ": cannot read it: No such file or directory"));
  EXPECT_THAT(readInventoryFile(folder.path()).problems,
              ElementsAre(folder.path().string() + ": cannot read it: Is a directory"));
}

}  // namespace
}  // namespace orb::test
