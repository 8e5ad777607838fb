#include "i2c/register_text.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "bytes.h"

namespace orb::sim {
namespace {

constexpr const char* kFactoryText =
    "port expander at 0x21   port 0   port 1\n"
    "0 1  input                  ff       ff\n"
    "2 3  output                 ff       ff\n"
    "4 5  polarity               00       00\n"
    "6 7  direction              ff       ff\n"
    "next register                         0\n"
    "antenna supply               not driven\n";

std::string textOf(const PortExpander& expander) {
  return std::string(RegisterText(expander).view());
}

std::string supplyIn(const PortExpander& expander) {
  const std::string text = textOf(expander);
  const std::string line = text.substr(text.find("antenna supply"));
  return line.substr(line.find_first_not_of(' ', sizeof "antenna supply" - 1));
}

TEST(RegisterText, ShowsTheRegistersAfterTheSupplyCameOn) {
  EXPECT_EQ(textOf(PortExpander()), kFactoryText);
}

TEST(RegisterText, ShowsEveryRegisterInItsPlace) {
  PortExpander expander;
  receive(expander, {2, 0x12, 0x34});
  receive(expander, {4, 0x56, 0x78});
  receive(expander, {6, 0x9A, 0xBC});
  receive(expander, {5});
  EXPECT_EQ(textOf(expander),
            "port expander at 0x21   port 0   port 1\n"
            "0 1  input                  cc       c4\n"
            "2 3  output                 12       34\n"
            "4 5  polarity               56       78\n"
            "6 7  direction              9a       bc\n"
            "next register                         5\n"
            "antenna supply                      off\n");
}

TEST(RegisterText, TellsWhetherTheAntennaIsSupplied) {
  PortExpander expander;
  receive(expander, {3, 0xFE});
  EXPECT_EQ(supplyIn(expander), "not driven\n");
  receive(expander, {7, 0xFE});
  EXPECT_EQ(supplyIn(expander), "off\n");
  receive(expander, {3, 0x01});
  EXPECT_EQ(supplyIn(expander), "on\n");
}

TEST(RegisterText, GivesTheRegistersBack) {
  std::mt19937 random(20240611);
  for (int round = 0; round < 1000; ++round) {
    PortExpander expander;
    for (std::uint8_t number = 2; number < PortExpander::kRegisterCount; ++number) {
      expander.set(number, static_cast<std::uint8_t>(random()));
    }
    expander.select(static_cast<std::uint8_t>(random()));
    PortExpander found;
    ASSERT_TRUE(RegisterText::read(RegisterText(expander).view(), found));
    ASSERT_EQ(textOf(found), textOf(expander));
    ASSERT_EQ(found.selected(), expander.selected());
  }
}

TEST(RegisterText, IsNotTakenFromATextOfAnotherForm) {
  const std::string good = kFactoryText;
  PortExpander expander;
  receive(expander, {2, 0x12, 0x34});
  const std::string before = textOf(expander);
  for (const std::string& bad : {std::string(), good.substr(1), good + "\n"}) {
    EXPECT_FALSE(RegisterText::read(bad, expander));
  }
  for (const char* digit : {"ff", "00", "0\n"}) {
    std::string bad = good;
    bad[bad.find(digit)] = 'x';
    EXPECT_FALSE(RegisterText::read(bad, expander)) << bad;
  }
  EXPECT_EQ(textOf(expander), before);
}

TEST(RegisterText, IsNotTakenWithARegisterThatIsNotThere) {
  std::string bad = kFactoryText;
  bad[bad.find("0\nantenna")] = '8';
  PortExpander expander;
  EXPECT_FALSE(RegisterText::read(bad, expander));
}

}  // namespace
}  // namespace orb::sim
