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
  int carry(std::uint8_t direction, std::uint8_t command, std::uint32_t kind) {
    return sim::transferSmbus(expander_, address_, {direction, command, kind, &data_});
  }
  /// The data: a block, or what is in its place.
  void setData(const Bytes& bytes) { std::copy(bytes.begin(), bytes.end(), data_.block); }
  Bytes data(std::size_t count) const { return {data_.block, data_.block + count}; }

  sim::PortExpander expander_;
  std::uint16_t address_ = kAddress;
  i2c_smbus_data data_{.block = {}};  // the largest member
};

TEST_F(Smbus, FindsTheExpanderByAQuickCommandAndByAByte) {
  for (address_ = 0; address_ < 0x80; ++address_) {
    const int expected = address_ == kAddress ? 0 : -ENXIO;
    EXPECT_EQ(carry(I2C_SMBUS_WRITE, 0, I2C_SMBUS_QUICK), expected);
    EXPECT_EQ(carry(I2C_SMBUS_READ, 0, I2C_SMBUS_QUICK), expected);
    EXPECT_EQ(carry(I2C_SMBUS_READ, 0, I2C_SMBUS_BYTE), expected);
  }
}

TEST_F(Smbus, SelectsARegisterByALoneByteAndReadsFromThere) {
  set(expander_, 2, {0x12, 0x34});
  EXPECT_EQ(sim::transferSmbus(expander_, kAddress, {I2C_SMBUS_WRITE, 3, I2C_SMBUS_BYTE, nullptr}),
            0);
  EXPECT_EQ(carry(I2C_SMBUS_READ, 0, I2C_SMBUS_BYTE), 0);
  EXPECT_EQ(data(2), (Bytes{0x34, 0}));
}

TEST_F(Smbus, WritesAndReadsWhatEachKindHasOnTheWire) {
  struct Row {
    std::uint32_t kind;
    std::uint8_t direction;
    Bytes data;       // as the program hands it over
    Bytes dataAfter;  // as it finds it afterwards
    Bytes output;     // the output registers afterwards, before 0A 0B
  };
  constexpr std::uint8_t kRead = I2C_SMBUS_READ;
  constexpr std::uint8_t kWrite = I2C_SMBUS_WRITE;
  const Row rows[] = {
      {I2C_SMBUS_BYTE_DATA, kWrite, {0x12, 0x34}, {0x12, 0x34}, {0x12, 0x0B}},
      {I2C_SMBUS_BYTE_DATA, kRead, {0, 0}, {0x0A, 0}, {0x0A, 0x0B}},
      {I2C_SMBUS_WORD_DATA, kWrite, {0x12, 0x34, 0x56}, {0x12, 0x34, 0x56}, {0x12, 0x34}},
      {I2C_SMBUS_WORD_DATA, kRead, {0, 0, 0}, {0x0A, 0x0B, 0}, {0x0A, 0x0B}},
      {I2C_SMBUS_PROC_CALL, kWrite, {0x12, 0x34, 0x56}, {0x12, 0x34, 0x56}, {0x12, 0x34}},
      {I2C_SMBUS_I2C_BLOCK_DATA, kWrite, {1, 0x12, 0x34}, {1, 0x12, 0x34}, {0x12, 0x0B}},
      {I2C_SMBUS_I2C_BLOCK_DATA, kRead, {2, 0, 0, 0}, {2, 0x0A, 0x0B, 0}, {0x0A, 0x0B}},
      {I2C_SMBUS_I2C_BLOCK_BROKEN, kRead, {2, 0, 0, 0}, {2, 0x0A, 0x0B, 0}, {0x0A, 0x0B}},
      {I2C_SMBUS_BLOCK_DATA, kWrite, {1, 0x12, 0x34}, {1, 0x12, 0x34}, {1, 0x12}},
  };
  for (const Row& row : rows) {
    set(expander_, 2, {0x0A, 0x0B});
    setData(row.data);
    EXPECT_EQ(carry(row.direction, 2, row.kind), 0) << row.kind;
    EXPECT_EQ(data(row.data.size()), row.dataAfter) << row.kind;
    EXPECT_EQ(pair(expander_, 2), row.output) << row.kind;
  }
  // A process call reads after it has written; the inputs are not to be written.
  EXPECT_EQ(carry(I2C_SMBUS_WRITE, 0, I2C_SMBUS_PROC_CALL), 0);
  EXPECT_EQ(data_.word, 0xFFFF);
}

TEST_F(Smbus, RefusesABlockThatIsTooLongAndWhatItsAdapterCannotDo) {
  setData({I2C_SMBUS_BLOCK_MAX});
  EXPECT_EQ(carry(I2C_SMBUS_READ, 2, I2C_SMBUS_I2C_BLOCK_DATA), 0);
  EXPECT_EQ(data_.block[I2C_SMBUS_BLOCK_MAX], 0xFF);
  EXPECT_EQ(data_.block[I2C_SMBUS_BLOCK_MAX + 1], 0);
  setData({I2C_SMBUS_BLOCK_MAX + 1});
  EXPECT_EQ(carry(I2C_SMBUS_WRITE, 2, I2C_SMBUS_I2C_BLOCK_DATA), -EINVAL);
  EXPECT_EQ(carry(I2C_SMBUS_READ, 2, I2C_SMBUS_I2C_BLOCK_DATA), -EINVAL);
  EXPECT_EQ(carry(I2C_SMBUS_WRITE, 2, I2C_SMBUS_BLOCK_DATA), -EINVAL);
  EXPECT_EQ(carry(I2C_SMBUS_READ, 2, I2C_SMBUS_BLOCK_DATA), -EOPNOTSUPP);
  EXPECT_EQ(carry(I2C_SMBUS_WRITE, 2, I2C_SMBUS_BLOCK_PROC_CALL), -EOPNOTSUPP);
  EXPECT_EQ(pair(expander_, 2), (Bytes{0xFF, 0xFF}));
}

}  // namespace
}  // namespace orb::test
