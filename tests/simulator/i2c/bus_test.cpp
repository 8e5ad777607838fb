#include "i2c/bus.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <vector>

#include "bytes.h"

namespace orb::sim {
namespace {

constexpr std::uint16_t kOther = 0x20;

i2c_msg writing(ByteList& bytes, std::uint16_t address = PortExpander::kAddress) {
  return {address, 0, static_cast<std::uint16_t>(bytes.size()), bytes.data()};
}

i2c_msg reading(ByteList& bytes, std::uint16_t address = PortExpander::kAddress) {
  return {address, I2C_M_RD, static_cast<std::uint16_t>(bytes.size()), bytes.data()};
}

class Bus : public testing::Test {
 protected:
  int carry(std::vector<i2c_msg> messages) {
    return transfer(expander_, messages.data(), static_cast<unsigned int>(messages.size()));
  }

  PortExpander expander_;
  ByteList output_{2, 0x12, 0x34};
  ByteList read_{0, 0};
};

TEST_F(Bus, CarriesAWriteAndAReadInOneTransfer) {
  ByteList select{2};
  EXPECT_EQ(carry({writing(output_)}), 1);
  EXPECT_EQ(carry({writing(select), reading(read_)}), 2);
  EXPECT_EQ(read_, (ByteList{0x12, 0x34}));
}

TEST_F(Bus, HasNoDeviceAtAnyOtherAddress) {
  for (std::uint16_t address = 0; address < 0x80; ++address) {
    const bool isThere = address == PortExpander::kAddress;
    ByteList none;
    EXPECT_EQ(carry({writing(none, address)}), isThere ? 1 : -ENXIO) << address;
    EXPECT_EQ(carry({reading(read_, address)}), isThere ? 1 : -ENXIO) << address;
  }
}

TEST_F(Bus, HasNoDeviceWithATenBitAddress) {
  i2c_msg message = writing(output_);
  message.flags = I2C_M_TEN;
  EXPECT_EQ(carry({message}), -ENXIO);
  EXPECT_EQ(pair(expander_, 2), (ByteList{0xFF, 0xFF}));
}

TEST_F(Bus, HasDoneWhatCameBeforeAMessageThatNobodyTakes) {
  ByteList more{6, 0, 0};
  EXPECT_EQ(carry({writing(output_), writing(output_, kOther), writing(more)}), -ENXIO);
  EXPECT_EQ(pair(expander_, 2), (ByteList{0x12, 0x34}));
  EXPECT_EQ(pair(expander_, 6), (ByteList{0xFF, 0xFF}));
}

TEST_F(Bus, RefusesATransferOfTooManyMessagesOrNone) {
  const std::vector<i2c_msg> most(I2C_RDWR_IOCTL_MAX_MSGS, writing(output_));
  EXPECT_EQ(carry(most), I2C_RDWR_IOCTL_MAX_MSGS);
  std::vector<i2c_msg> tooMany = most;
  tooMany.push_back(most[0]);
  EXPECT_EQ(carry(tooMany), -EINVAL);
  EXPECT_EQ(carry({}), -EINVAL);
  EXPECT_EQ(transfer(expander_, nullptr, 1), -EINVAL);
}

TEST_F(Bus, RefusesAMessageThatIsTooLongBeforeAnythingIsCarried) {
  ByteList longest(kLongestMessage, 0x55);
  longest[0] = 2;
  EXPECT_EQ(carry({writing(longest)}), 1);
  ByteList tooLong(kLongestMessage + 1);
  EXPECT_EQ(carry({writing(output_), writing(tooLong)}), -EINVAL);
  EXPECT_EQ(pair(expander_, 2), (ByteList{0x55, 0x55}));
}

TEST_F(Bus, RefusesWhatItsAdapterCannotDo) {
  for (const int flag : {I2C_M_RECV_LEN, I2C_M_NOSTART, I2C_M_IGNORE_NAK, I2C_M_REV_DIR_ADDR}) {
    i2c_msg message = reading(read_);
    message.flags = static_cast<std::uint16_t>(message.flags | flag);
    EXPECT_EQ(carry({message}), -EOPNOTSUPP) << flag;
  }
}

TEST_F(Bus, RefusesAMessageWithoutItsBytes) {
  EXPECT_EQ(carry({{PortExpander::kAddress, 0, 1, nullptr}}), -EINVAL);
}

}  // namespace
}  // namespace orb::sim
