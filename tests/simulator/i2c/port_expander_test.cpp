#include "i2c/port_expander.h"

#include <gtest/gtest.h>

#include "registers.h"

namespace orb::test {
namespace {

using sim::Bytes;

class PortExpander : public testing::Test {
 protected:
  sim::PortExpander expander_;
};

TEST_F(PortExpander, StartsWithEveryPinAnInputThatIsPulledUp) {
  EXPECT_EQ(pair(expander_, 0), (Bytes{0xFF, 0xFF}));
  EXPECT_EQ(pair(expander_, 2), (Bytes{0xFF, 0xFF}));
  EXPECT_EQ(pair(expander_, 4), (Bytes{0x00, 0x00}));
  EXPECT_EQ(pair(expander_, 6), (Bytes{0xFF, 0xFF}));
}

TEST_F(PortExpander, TakesBothPortsInOneWrite) {
  set(expander_, 2, {0x12, 0x34});
  set(expander_, 6, {0x56, 0x78});
  EXPECT_EQ(pair(expander_, 2), (Bytes{0x12, 0x34}));
  EXPECT_EQ(pair(expander_, 6), (Bytes{0x56, 0x78}));
}

TEST_F(PortExpander, StartsWithTheSecondPortWhereItsRegisterIsSelected) {
  set(expander_, 3, {0x34, 0x12});
  EXPECT_EQ(pair(expander_, 2), (Bytes{0x12, 0x34}));
}

TEST_F(PortExpander, StaysWithinAPairOfRegisters) {
  set(expander_, 2, {0x01, 0x02, 0x03, 0x04, 0x05});
  EXPECT_EQ(pair(expander_, 2), (Bytes{0x05, 0x04}));
  EXPECT_EQ(pair(expander_, 4), (Bytes{0x00, 0x00}));
  expander_.select(2);
  EXPECT_EQ(read(expander_, 5), (Bytes{0x05, 0x04, 0x05, 0x04, 0x05}));
}

TEST_F(PortExpander, ContinuesAReadWhereTheLastTransferStopped) {
  set(expander_, 2, {0x12, 0x34, 0x12});
  EXPECT_EQ(read(expander_, 1), Bytes{0x34});
  EXPECT_EQ(read(expander_, 1), Bytes{0x12});
  EXPECT_EQ(read(expander_, 1), Bytes{0x34});
}

TEST_F(PortExpander, UsesTheLowThreeBitsOfARegisterNumber) {
  set(expander_, 0xFA, {0x12});
  EXPECT_EQ(pair(expander_, 2), (Bytes{0x12, 0xFF}));
}

TEST_F(PortExpander, ShowsAnOutputsLevelAtItsInput) {
  set(expander_, 2, {0xAA, 0x00});
  set(expander_, 6, {0xF0, 0xFE});
  EXPECT_EQ(pair(expander_, 0), (Bytes{0xFA, 0xFE}));
}

TEST_F(PortExpander, InvertsInputsWhereThePolarityIsSet) {
  set(expander_, 4, {0x0F, 0x80});
  EXPECT_EQ(pair(expander_, 0), (Bytes{0xF0, 0x7F}));
  EXPECT_EQ(pair(expander_, 2), (Bytes{0xFF, 0xFF}));
}

TEST_F(PortExpander, KeepsItsInputsWhenTheyAreWritten) {
  set(expander_, 0, {0x00, 0x00});
  EXPECT_EQ(pair(expander_, 0), (Bytes{0xFF, 0xFF}));
}

}  // namespace
}  // namespace orb::test
