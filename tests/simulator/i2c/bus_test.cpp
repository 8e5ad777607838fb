#include "i2c/bus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "registers.h"

namespace orb::test {
namespace {

using sim::Bytes;

constexpr std::uint16_t kAddress = sim::PortExpander::kAddress;

i2c_msg writing(Bytes& bytes, std::uint16_t address = kAddress) {
  return {address, 0, static_cast<std::uint16_t>(bytes.size()), bytes.data()};
}

i2c_msg reading(Bytes& bytes, std::uint16_t address = kAddress) {
  return {address, I2C_M_RD, static_cast<std::uint16_t>(bytes.size()), bytes.data()};
}

class Bus : public testing::Test {
 protected:
  int carry(const std::vector<i2c_msg>& messages) {
    return sim::transfer(expander_, messages.data(), static_cast<unsigned int>(messages.size()));
  }

  sim::PortExpander expander_;
  Bytes output_{2, 0x12, 0x34};
  Bytes read_{0, 0};
};

TEST_F(Bus, CarriesAWriteAndAReadInOneTransfer) {
  Bytes select{2};
  EXPECT_EQ(carry({writing(output_)}), 1);
  EXPECT_EQ(carry({writing(select), reading(read_)}), 2);
  EXPECT_EQ(read_, (Bytes{0x12, 0x34}));
}

TEST_F(Bus, CarriesAnEmptyWriteThatLeavesTheExpanderAlone) {
  Bytes none;
  expander_.select(3);
  EXPECT_EQ(carry({writing(none)}), 1);
  EXPECT_EQ(expander_.selected(), 3);
}

TEST_F(Bus, HasNoDeviceAtAnyOtherAddress) {
  for (std::uint16_t address = 0; address < 0x80; ++address) {
    const int expected = address == kAddress ? 1 : -ENXIO;
    Bytes none;
    EXPECT_EQ(carry({writing(none, address)}), expected) << address;
    EXPECT_EQ(carry({reading(read_, address)}), expected) << address;
  }
}

TEST_F(Bus, HasDoneWhatCameBeforeAMessageThatNobodyTakes) {
  Bytes more{6, 0, 0};
  EXPECT_EQ(carry({writing(output_), writing(output_, 0x20), writing(more)}), -ENXIO);
  EXPECT_EQ(pair(expander_, 2), (Bytes{0x12, 0x34}));
  EXPECT_EQ(pair(expander_, 6), (Bytes{0xFF, 0xFF}));
}

TEST_F(Bus, RefusesATransferOfTooManyMessagesOrNone) {
  EXPECT_EQ(carry(std::vector<i2c_msg>(I2C_RDWR_IOCTL_MAX_MSGS, writing(output_))),
            I2C_RDWR_IOCTL_MAX_MSGS);
  EXPECT_EQ(carry(std::vector<i2c_msg>(I2C_RDWR_IOCTL_MAX_MSGS + 1, writing(output_))), -EINVAL);
  EXPECT_EQ(carry({}), -EINVAL);
}

TEST_F(Bus, RefusesAMessageThatIsTooLongBeforeAnythingIsCarried) {
  Bytes longest(sim::kLongestMessage, 0x55);
  longest[0] = 2;
  EXPECT_EQ(carry({writing(longest)}), 1);
  Bytes tooLong(sim::kLongestMessage + 1);
  EXPECT_EQ(carry({writing(output_), writing(tooLong)}), -EINVAL);
  EXPECT_EQ(pair(expander_, 2), (Bytes{0x55, 0x55}));
}

TEST_F(Bus, RefusesWhatItsAdapterCannotDo) {
  for (const int flag :
       {I2C_M_TEN, I2C_M_RECV_LEN, I2C_M_NOSTART, I2C_M_IGNORE_NAK, I2C_M_REV_DIR_ADDR}) {
    i2c_msg message = reading(read_);
    message.flags = static_cast<std::uint16_t>(message.flags | flag);
    EXPECT_EQ(carry({message}), -EOPNOTSUPP) << flag;
  }
}

class Smbus : public testing::Test {
 protected:
  int write(std::uint32_t size, std::uint8_t command) {
    return sim::transferSmbus(expander_, address_, {I2C_SMBUS_WRITE, command, size, &data_});
  }
  int read(std::uint32_t size, std::uint8_t command) {
    return sim::transferSmbus(expander_, address_, {I2C_SMBUS_READ, command, size, &data_});
  }
  /// The data: a block, or what is in its place.
  void setData(const Bytes& bytes) { std::copy(bytes.begin(), bytes.end(), data_.block); }
  Bytes data(std::size_t count) const { return {data_.block, data_.block + count}; }

  sim::PortExpander expander_;
  std::uint16_t address_ = kAddress;
  i2c_smbus_data data_{};
};

TEST_F(Smbus, FindsTheExpanderByAQuickCommandAndByAByte) {
  for (address_ = 0; address_ < 0x80; ++address_) {
    const int expected = address_ == kAddress ? 0 : -ENXIO;
    EXPECT_EQ(write(I2C_SMBUS_QUICK, 0), expected);
    EXPECT_EQ(read(I2C_SMBUS_QUICK, 0), expected);
    EXPECT_EQ(read(I2C_SMBUS_BYTE, 0), expected);
  }
}

TEST_F(Smbus, SelectsARegisterByALoneByteAndReadsFromThere) {
  set(expander_, 2, {0x12, 0x34});
  EXPECT_EQ(sim::transferSmbus(expander_, kAddress, {I2C_SMBUS_WRITE, 3, I2C_SMBUS_BYTE, nullptr}),
            0);
  EXPECT_EQ(read(I2C_SMBUS_BYTE, 0), 0);
  EXPECT_EQ(data_.byte, 0x34);
}

TEST_F(Smbus, WritesAndReadsOneRegister) {
  setData({0x12, 0x55});
  EXPECT_EQ(write(I2C_SMBUS_BYTE_DATA, 3), 0);
  EXPECT_EQ(pair(expander_, 2), (Bytes{0xFF, 0x12}));
  data_ = {};
  EXPECT_EQ(read(I2C_SMBUS_BYTE_DATA, 3), 0);
  EXPECT_EQ(data(2), (Bytes{0x12, 0}));
}

TEST_F(Smbus, CarriesTheLowByteOfAWordFirst) {
  data_.word = 0x3412;
  EXPECT_EQ(write(I2C_SMBUS_WORD_DATA, 2), 0);
  EXPECT_EQ(pair(expander_, 2), (Bytes{0x12, 0x34}));
  data_ = {};
  EXPECT_EQ(read(I2C_SMBUS_WORD_DATA, 2), 0);
  EXPECT_EQ(data_.word, 0x3412);
}

TEST_F(Smbus, AnswersAProcessCallWithTheWordThatFollows) {
  data_.word = 0x3412;
  EXPECT_EQ(write(I2C_SMBUS_PROC_CALL, 2), 0);
  EXPECT_EQ(data_.word, 0x3412);
  EXPECT_EQ(pair(expander_, 2), (Bytes{0x12, 0x34}));
  EXPECT_EQ(write(I2C_SMBUS_PROC_CALL, 0), 0);
  EXPECT_EQ(data_.word, 0xFFFF);
}

TEST_F(Smbus, WritesAndReadsABlockWithoutItsLength) {
  for (const std::uint32_t size : {I2C_SMBUS_I2C_BLOCK_DATA, I2C_SMBUS_I2C_BLOCK_BROKEN}) {
    setData({3, 0x12, 0x34, 0x56});
    EXPECT_EQ(write(size, 2), 0);
    EXPECT_EQ(pair(expander_, 2), (Bytes{0x56, 0x34}));
    setData({2, 0, 0, 0});
    EXPECT_EQ(read(size, 2), 0);
    EXPECT_EQ(data(4), (Bytes{2, 0x56, 0x34, 0}));
  }
}

TEST_F(Smbus, WritesABlockAfterItsLength) {
  setData({1, 0x12});
  EXPECT_EQ(write(I2C_SMBUS_BLOCK_DATA, 2), 0);
  EXPECT_EQ(pair(expander_, 2), (Bytes{0x01, 0x12}));
}

TEST_F(Smbus, CarriesTheLongestBlockAndRefusesALongerOne) {
  setData({I2C_SMBUS_BLOCK_MAX});
  EXPECT_EQ(read(I2C_SMBUS_I2C_BLOCK_DATA, 2), 0);
  EXPECT_EQ(data(I2C_SMBUS_BLOCK_MAX + 2).back(), 0);
  EXPECT_EQ(data(I2C_SMBUS_BLOCK_MAX + 1).back(), 0xFF);
  setData({I2C_SMBUS_BLOCK_MAX + 1});
  EXPECT_EQ(write(I2C_SMBUS_I2C_BLOCK_DATA, 2), -EINVAL);
  EXPECT_EQ(read(I2C_SMBUS_I2C_BLOCK_DATA, 2), -EINVAL);
  EXPECT_EQ(write(I2C_SMBUS_BLOCK_DATA, 2), -EINVAL);
  EXPECT_EQ(pair(expander_, 2), (Bytes{0xFF, 0xFF}));
}

TEST_F(Smbus, RefusesWhatItsAdapterCannotDo) {
  EXPECT_EQ(read(I2C_SMBUS_BLOCK_DATA, 2), -EOPNOTSUPP);
  EXPECT_EQ(write(I2C_SMBUS_BLOCK_PROC_CALL, 2), -EOPNOTSUPP);
}

}  // namespace
}  // namespace orb::test
