#include "i2c/port_expander.h"

#include <gtest/gtest.h>

#include "bytes.h"

namespace orb::sim {
namespace {

TEST(PortExpander, StartsWithEveryPinAnInputThatIsPulledUp) {
  PortExpander expander;
  EXPECT_EQ(pair(expander, 0), (ByteList{0xFF, 0xFF}));
  EXPECT_EQ(pair(expander, 2), (ByteList{0xFF, 0xFF}));
  EXPECT_EQ(pair(expander, 4), (ByteList{0x00, 0x00}));
  EXPECT_EQ(pair(expander, 6), (ByteList{0xFF, 0xFF}));
}

TEST(PortExpander, TakesBothPortsInOneWrite) {
  PortExpander expander;
  receive(expander, {2, 0x12, 0x34});
  receive(expander, {6, 0x56, 0x78});
  EXPECT_EQ(pair(expander, 2), (ByteList{0x12, 0x34}));
  EXPECT_EQ(pair(expander, 6), (ByteList{0x56, 0x78}));
}

TEST(PortExpander, StartsWithTheSecondPortWhereItsRegisterIsNamed) {
  PortExpander expander;
  receive(expander, {3, 0x34, 0x12});
  EXPECT_EQ(pair(expander, 2), (ByteList{0x12, 0x34}));
}

TEST(PortExpander, StaysWithinAPairOfRegisters) {
  PortExpander expander;
  receive(expander, {2, 0x01, 0x02, 0x03, 0x04, 0x05});
  EXPECT_EQ(pair(expander, 2), (ByteList{0x05, 0x04}));
  EXPECT_EQ(pair(expander, 4), (ByteList{0x00, 0x00}));
  receive(expander, {2});
  EXPECT_EQ(send(expander, 5), (ByteList{0x05, 0x04, 0x05, 0x04, 0x05}));
}

TEST(PortExpander, ContinuesAReadWhereTheLastTransferStopped) {
  PortExpander expander;
  receive(expander, {2, 0x12, 0x34});
  receive(expander, {2});
  EXPECT_EQ(send(expander, 1), ByteList{0x12});
  EXPECT_EQ(send(expander, 1), ByteList{0x34});
  EXPECT_EQ(send(expander, 1), ByteList{0x12});
}

TEST(PortExpander, SeesTheLowThreeBitsOfARegisterNumberOnly) {
  PortExpander expander;
  receive(expander, {0xFA, 0x12});
  EXPECT_EQ(pair(expander, 2), (ByteList{0x12, 0xFF}));
}

TEST(PortExpander, ShowsAnOutputsLevelAtItsInput) {
  PortExpander expander;
  receive(expander, {2, 0xAA, 0x00});
  receive(expander, {6, 0xF0, 0xFE});
  EXPECT_EQ(pair(expander, 0), (ByteList{0xFA, 0xFE}));
}

TEST(PortExpander, TurnsInputsOverWhereThePolaritySaysSo) {
  PortExpander expander;
  receive(expander, {4, 0x0F, 0x80});
  EXPECT_EQ(pair(expander, 0), (ByteList{0xF0, 0x7F}));
  EXPECT_EQ(pair(expander, 2), (ByteList{0xFF, 0xFF}));
}

TEST(PortExpander, KeepsItsInputsWhenTheyAreWritten) {
  PortExpander expander;
  receive(expander, {0, 0x00, 0x00});
  EXPECT_EQ(pair(expander, 0), (ByteList{0xFF, 0xFF}));
}

TEST(PortExpander, IsLeftAloneByAnEmptyWrite) {
  PortExpander expander;
  receive(expander, {3});
  receive(expander, {});
  EXPECT_EQ(expander.selected(), 3);
}

}  // namespace
}  // namespace orb::sim
