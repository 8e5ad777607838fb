#include "orb-gnss/chip_enable.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/fake_board.h"
#include "support/output_of.h"
#include "support/virtual_slot.h"

namespace orb::test {
namespace {

using Calls = std::vector<std::string>;

/// A whole switching of the antenna: what is written to the registers from 6 and from 2 on.
Calls switching(const std::string& direction, const std::string& output) {
  return {"open 0x21", "read 2 from 06", "write 06 " + direction, "read 2 from 02",
          "write 02 " + output};
}

/// The carrier board with all pins of its port expander inputs, except those given.
class CarrierBoardChip : public testing::Test {
 protected:
  CarrierBoardChip() { board_.registers = {0, 0, 0x5A, 0xC2, 0, 0, 0x37, 0xFF}; }

  /// What happened on the I2C bus; asking the inventory is left out.
  Calls transfers() const {
    Calls result;
    for (const std::string& call : board_.calls) {
      if (call.rfind("open", 0) == 0 || call.rfind("read", 0) == 0 || call.rfind("write", 0) == 0) {
        result.push_back(call);
      }
    }
    return result;
  }

  CarrierBoard board_;
  BrdOrbChipInterface chip_;
};

// Antenna power.

TEST_F(CarrierBoardChip, SwitchesTheAntennaOnAndOff) {
  EXPECT_EQ(chip_.antennaPowerEnable("ON"), 0);
  EXPECT_EQ(transfers(), switching("37 FE", "5A C3"));
  board_.calls.clear();
  EXPECT_EQ(chip_.antennaPowerEnable("OFF"), 0);
  EXPECT_EQ(transfers(), switching("37 FE", "5A C2"));
}

TEST_F(CarrierBoardChip, SwitchesAsOftenAsItIsTold) {
  for (const auto& [state, port] : {std::pair("ON", 0xC3), {"OFF", 0xC2}}) {
    chip_.antennaPowerEnable(state);
    chip_.antennaPowerEnable(state);
    EXPECT_EQ(board_.registers,
              (std::vector<unsigned char>{0, 0, 0x5A, static_cast<unsigned char>(port), 0, 0, 0x37,
                                          0xFE}));
  }
}

TEST_F(CarrierBoardChip, TakesTheStateInAnyCase) {
  for (const char* state : {"on", "On", "oN", "off", "Off", "oFF"}) {
    const unsigned char wanted = state[1] == 'n' || state[1] == 'N' ? 0x01 : 0x00;
    board_.registers[3] = wanted ^ 0x01;
    EXPECT_EQ(chip_.antennaPowerEnable(state), 0) << state;
    EXPECT_EQ(board_.registers[3], wanted) << state;
  }
}

TEST_F(CarrierBoardChip, WritesTheDirectionAloneForAnyOtherState) {
  for (const char* other : {"standby", "", "ON ", " ON", "ONE", "O", "OFFF", "\xFF"}) {
    board_.calls.clear();
    board_.registers[7] = 0xFF;
    EXPECT_EQ(chip_.antennaPowerEnable(other), 1) << other;
    EXPECT_EQ(transfers(), (Calls{"open 0x21", "read 2 from 06", "write 06 37 FE"})) << other;
  }
}

TEST_F(CarrierBoardChip, AsksTheInventoryForTheBusOfTheModuleAtLocationOne) {
  chip_.antennaPowerEnable("ON");
  EXPECT_EQ(board_.calls,
            (Calls{"inventory client", "locations", "end of inventory client", "resources client",
                   "address 1", "I2C bus", "end of resources client", "I2C device /dev/i2c-3",
                   "open 0x21", "read 2 from 06", "write 06 37 FE", "read 2 from 02",
                   "write 02 5A C3", "end of I2C device"}));
}

TEST_F(CarrierBoardChip, UsesABusWithoutNameAlsoWhenNoModuleIsFitted) {
  board_.modules[1].i2cBus = "";
  chip_.antennaPowerEnable("ON");
  EXPECT_EQ(board_.calls.at(7), "I2C device /dev/");
  board_.calls.clear();
  board_.modules.clear();
  EXPECT_EQ(chip_.antennaPowerEnable("ON"), 0);
  EXPECT_EQ(board_.calls,
            (Calls{"inventory client", "locations", "end of inventory client", "I2C device /dev/",
                   "open 0x21", "read 2 from 06", "write 06 37 FE", "read 2 from 02",
                   "write 02 5A C3", "end of I2C device"}));
}

TEST_F(CarrierBoardChip, DoesNothingMoreWhenTheBusCannotBeOpened) {
  for (const int result : {-1, -2, -2147483647}) {
    board_.calls.clear();
    board_.i2cOpenResult = result;
    EXPECT_EQ(chip_.antennaPowerEnable("ON"), 0);
    EXPECT_EQ(chip_.antennaPowerEnable("standby"), 0);
    EXPECT_EQ(transfers(), (Calls{"open 0x21", "open 0x21"}));
  }
}

TEST_F(CarrierBoardChip, TakesAnyOtherResultOfOpenForSuccess) {
  board_.i2cOpenResult = 7;
  EXPECT_EQ(chip_.antennaPowerEnable("ON"), 0);
  EXPECT_EQ(board_.registers[3], 0xC3);
}

// What is not read counts as after power-on: no other pin becomes an output.
TEST_F(CarrierBoardChip, GoesOnWhenReadsAndWritesFail) {
  board_.i2cTransferResult = -121;
  EXPECT_EQ(chip_.antennaPowerEnable("ON"), 0);
  EXPECT_EQ(transfers(), switching("FF FE", "FF FF"));
  board_.calls.clear();
  EXPECT_EQ(chip_.antennaPowerEnable("OFF"), 0);
  EXPECT_EQ(transfers(), switching("FF FE", "FF FE"));
  EXPECT_EQ(chip_.antennaPowerEnable("standby"), 1);
}

TEST_F(CarrierBoardChip, PrintsNothingWhenItSwitches) {
  EXPECT_EQ(standardOutputOf([this] {
              chip_.antennaPowerEnable("ON");
              chip_.antennaPowerEnable("standby");
            }),
            "");
}

class FailingBoardChip : public CarrierBoardChip,
                         public testing::WithParamInterface<const char*> {};

TEST_P(FailingBoardChip, PassesTheExceptionOn) {
  board_.failingCall = GetParam();
  EXPECT_THROW(chip_.antennaPowerEnable("ON"), BoardFailure);
}

INSTANTIATE_TEST_SUITE_P(, FailingBoardChip,
                         testing::Values("locations", "I2C bus", "I2C device /dev/i2c-3",
                                         "open 0x21", "read 2 from 06", "write 06 37 FE"));

// Reset.

TEST_F(CarrierBoardChip, PrintsThatItSkipsTheReset) {
  EXPECT_EQ(standardOutputOf([this] { EXPECT_EQ(chip_.resetOrbChip(), 0); }), "reset skipp!\n");
  EXPECT_TRUE(board_.calls.empty());
}

// No board.

TEST(NullChip, DoesNothing) {
  CarrierBoard board;
  NullChipInterface chip;
  EXPECT_EQ(standardOutputOf([&] {
              EXPECT_EQ(chip.resetOrbChip(), 0);
              EXPECT_EQ(chip.antennaPowerEnable("ON"), 0);
              EXPECT_EQ(chip.antennaPowerEnable("standby"), 0);
            }),
            "");
  EXPECT_TRUE(board.calls.empty());
}

// The interface.

TEST(ChipInterface, IsDestroyedThroughItself) {
  struct Watched : NullChipInterface {
    explicit Watched(bool& gone) : gone_(gone) {}
    ~Watched() override { gone_ = true; }
    bool& gone_;
  };
  bool gone = false;
  std::unique_ptr<OrbChipEnableInterface>(new Watched(gone)).reset();
  EXPECT_TRUE(gone);
}

// The destructor takes the first two slots.
TEST(ChipInterface, HasItsOperationsAfterItsDestructor) {
  struct Next : OrbChipEnableInterface {
    virtual void next() = 0;
  };
  EXPECT_EQ(slotOf(&OrbChipEnableInterface::resetOrbChip), 2u);
  EXPECT_EQ(slotOf(&OrbChipEnableInterface::antennaPowerEnable), 3u);
  EXPECT_EQ(slotOf(&Next::next), 4u);
  EXPECT_EQ(slotOf(&BrdOrbChipInterface::resetOrbChip), 2u);
  EXPECT_EQ(slotOf(&BrdOrbChipInterface::antennaPowerEnable), 3u);
  EXPECT_EQ(slotOf(&NullChipInterface::resetOrbChip), 2u);
  EXPECT_EQ(slotOf(&NullChipInterface::antennaPowerEnable), 3u);
}

TEST(ChipInterface, HasNoData) {
  EXPECT_TRUE(std::is_abstract_v<OrbChipEnableInterface>);
  EXPECT_EQ(sizeof(OrbChipEnableInterface), sizeof(void*));
  EXPECT_EQ(sizeof(BrdOrbChipInterface), sizeof(void*));
  EXPECT_EQ(sizeof(NullChipInterface), sizeof(void*));
}

}  // namespace
}  // namespace orb::test
