#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

#include "bytes.h"
#include "i2c/bus.h"

namespace orb::sim {
namespace {

class Smbus : public testing::Test {
 protected:
  int write(std::uint32_t size, std::uint8_t command) {
    return transferSmbus(expander_, address_, {I2C_SMBUS_WRITE, command, size, &data_});
  }
  int read(std::uint32_t size, std::uint8_t command) {
    return transferSmbus(expander_, address_, {I2C_SMBUS_READ, command, size, &data_});
  }
  void setBlock(const ByteList& bytes) {
    data_.block[0] = static_cast<std::uint8_t>(bytes.size());
    std::memcpy(data_.block + 1, bytes.data(), bytes.size());
  }
  ByteList block() const { return {data_.block + 1, data_.block + 1 + data_.block[0]}; }

  PortExpander expander_;
  std::uint16_t address_ = PortExpander::kAddress;
  i2c_smbus_data data_{};
};

TEST_F(Smbus, FindsTheExpanderByAQuickCommandAndByAByte) {
  for (address_ = 0; address_ < 0x80; ++address_) {
    const int expected = address_ == PortExpander::kAddress ? 0 : -ENXIO;
    EXPECT_EQ(write(I2C_SMBUS_QUICK, 0), expected);
    EXPECT_EQ(read(I2C_SMBUS_QUICK, 0), expected);
    EXPECT_EQ(read(I2C_SMBUS_BYTE, 0), expected);
  }
}

TEST_F(Smbus, SelectsARegisterByALoneByteAndReadsFromThere) {
  receive(expander_, {2, 0x12, 0x34});
  EXPECT_EQ(write(I2C_SMBUS_BYTE, 3), 0);
  EXPECT_EQ(read(I2C_SMBUS_BYTE, 0), 0);
  EXPECT_EQ(data_.byte, 0x34);
}

TEST_F(Smbus, WritesAndReadsOneRegister) {
  data_.byte = 0x12;
  EXPECT_EQ(write(I2C_SMBUS_BYTE_DATA, 3), 0);
  EXPECT_EQ(pair(expander_, 2), (ByteList{0xFF, 0x12}));
  data_.byte = 0;
  EXPECT_EQ(read(I2C_SMBUS_BYTE_DATA, 3), 0);
  EXPECT_EQ(data_.byte, 0x12);
}

TEST_F(Smbus, CarriesTheLowByteOfAWordFirst) {
  data_.word = 0x3412;
  EXPECT_EQ(write(I2C_SMBUS_WORD_DATA, 2), 0);
  EXPECT_EQ(pair(expander_, 2), (ByteList{0x12, 0x34}));
  data_.word = 0;
  EXPECT_EQ(read(I2C_SMBUS_WORD_DATA, 2), 0);
  EXPECT_EQ(data_.word, 0x3412);
}

TEST_F(Smbus, AnswersAProcessCallWithTheWordThatFollows) {
  data_.word = 0x3412;
  EXPECT_EQ(write(I2C_SMBUS_PROC_CALL, 2), 0);
  EXPECT_EQ(data_.word, 0x3412);
  EXPECT_EQ(pair(expander_, 2), (ByteList{0x12, 0x34}));
}

TEST_F(Smbus, WritesAndReadsABlockWithoutItsLength) {
  setBlock({0x12, 0x34, 0x56});
  EXPECT_EQ(write(I2C_SMBUS_I2C_BLOCK_DATA, 2), 0);
  EXPECT_EQ(pair(expander_, 2), (ByteList{0x56, 0x34}));
  setBlock({0, 0});
  EXPECT_EQ(read(I2C_SMBUS_I2C_BLOCK_DATA, 2), 0);
  EXPECT_EQ(block(), (ByteList{0x56, 0x34}));
}

TEST_F(Smbus, ReadsTheLongestBlockForAProgramOfTheOldestKernels) {
  EXPECT_EQ(read(I2C_SMBUS_I2C_BLOCK_BROKEN, 2), 0);
  EXPECT_EQ(block(), ByteList(I2C_SMBUS_BLOCK_MAX, 0xFF));
}

TEST_F(Smbus, WritesABlockBehindItsLength) {
  setBlock({0x12});
  EXPECT_EQ(write(I2C_SMBUS_BLOCK_DATA, 2), 0);
  EXPECT_EQ(pair(expander_, 2), (ByteList{0x01, 0x12}));
}

TEST_F(Smbus, RefusesABlockThatIsTooLong) {
  data_.block[0] = I2C_SMBUS_BLOCK_MAX + 1;
  EXPECT_EQ(write(I2C_SMBUS_I2C_BLOCK_DATA, 2), -EINVAL);
  EXPECT_EQ(read(I2C_SMBUS_I2C_BLOCK_DATA, 2), -EINVAL);
  EXPECT_EQ(write(I2C_SMBUS_BLOCK_DATA, 2), -EINVAL);
  EXPECT_EQ(pair(expander_, 2), (ByteList{0xFF, 0xFF}));
}

TEST_F(Smbus, RefusesWhatItsAdapterCannotDo) {
  EXPECT_EQ(read(I2C_SMBUS_BLOCK_DATA, 2), -EOPNOTSUPP);
  EXPECT_EQ(write(I2C_SMBUS_BLOCK_PROC_CALL, 2), -EOPNOTSUPP);
  EXPECT_EQ(write(I2C_SMBUS_I2C_BLOCK_DATA + 1, 2), -EINVAL);
  EXPECT_EQ(transferSmbus(expander_, address_, {2, 0, I2C_SMBUS_BYTE, &data_}), -EINVAL);
}

TEST_F(Smbus, RefusesATransferWithoutItsData) {
  EXPECT_EQ(transferSmbus(expander_, address_, {I2C_SMBUS_READ, 0, I2C_SMBUS_BYTE, nullptr}),
            -EINVAL);
  EXPECT_EQ(transferSmbus(expander_, address_, {I2C_SMBUS_WRITE, 0, I2C_SMBUS_BYTE, nullptr}), 0);
}

}  // namespace
}  // namespace orb::sim
