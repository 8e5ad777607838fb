#include "i2c/register_text.h"

#include <gtest/gtest.h>

#include <string>

#include "registers.h"

namespace orb::test {
namespace {

constexpr const char* kFactoryText =
    "port expander at 0x21   port 0   port 1\n"
    "0 1  input                  ff       ff\n"
    "2 3  output                 ff       ff\n"
    "4 5  polarity               00       00\n"
    "6 7  direction              ff       ff\n"
    "next register                         0\n"
    "antenna supply               not driven\n";

constexpr const char* kOtherText =
    "port expander at 0x21   port 0   port 1\n"
    "0 1  input                  cc       c4\n"
    "2 3  output                 12       34\n"
    "4 5  polarity               56       78\n"
    "6 7  direction              9a       bc\n"
    "next register                         7\n"
    "antenna supply                      off\n";

std::string textOf(const sim::PortExpander& expander) {
  return std::string(sim::RegisterText(expander).view());
}

TEST(RegisterText, ShowsEveryRegisterInItsPlace) {
  sim::PortExpander expander;
  set(expander, 2, {0x12, 0x34});
  set(expander, 4, {0x56, 0x78});
  set(expander, 6, {0x9A, 0xBC});
  expander.select(7);
  EXPECT_EQ(textOf(expander), kOtherText);
}

TEST(RegisterText, TellsWhetherTheAntennaIsSupplied) {
  sim::PortExpander expander;
  const auto supply = [&] { return textOf(expander).substr(sim::RegisterText::kSize - 11); };
  set(expander, 3, {0xFE});
  EXPECT_EQ(supply(), "not driven\n");
  set(expander, 7, {0xFE});
  EXPECT_EQ(supply(), "       off\n");
  set(expander, 3, {0x01});
  EXPECT_EQ(supply(), "        on\n");
}

TEST(RegisterText, SetsTheRegisters) {
  sim::PortExpander expander;
  for (const char* const text : {kOtherText, kFactoryText}) {
    EXPECT_TRUE(sim::RegisterText::read(text, expander));
    EXPECT_EQ(textOf(expander), text);
  }
}

TEST(RegisterText, SetsNothingWhereItIsOfAnotherForm) {
  const auto changed = [](const std::string& part, const std::string& by) {
    std::string text = kFactoryText;
    return text.replace(text.find(part), part.size(), by);
  };
  sim::PortExpander expander;
  set(expander, 2, {0x12, 0x34});
  const std::string before = textOf(expander);
  for (const std::string& bad :
       {std::string(), changed("port expander", "other"),
        changed("ff       ff\n4", "fx       ff\n4"), changed("ff\nnext", "xx\nnext"),
        changed("0\nantenna", "8\nantenna"), changed("antenna supply", "antenna"),
        std::string(kFactoryText, 200)}) {
    EXPECT_FALSE(sim::RegisterText::read(bad.c_str(), expander)) << bad;
  }
  EXPECT_EQ(textOf(expander), before);
}

}  // namespace
}  // namespace orb::test
