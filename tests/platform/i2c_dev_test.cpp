#include "orb-platform/i2c_dev.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <numeric>

#include "fake_i2c_adapter.h"
#include "support/temporary_folder.h"

namespace orb::test {
namespace {

using Kind = FakeI2CAdapter::Kind;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kPath[] = "/dev/i2c-3";
constexpr int kAddress = 0x21;
constexpr unsigned char kRegister[] = {6};

/// `count` bytes 1, 2, 3 and so on.
std::vector<unsigned char> ascending(std::size_t count) {
  std::vector<unsigned char> bytes(count);
  std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
  return bytes;
}

/// An adapter with one slave, and the device open.
class I2CDevice {
 protected:
  explicit I2CDevice(Kind kind) : adapter_(kPath, kind) { EXPECT_EQ(device_.open(kAddress), 0); }

  FakeI2CAdapter adapter_;
  FakeI2CAdapter::Registers& registers_ = adapter_.addSlave(kAddress);
  I2CDev device_{kPath};
};

class EitherI2CDevice : public ::testing::TestWithParam<Kind>, protected I2CDevice {
 protected:
  EitherI2CDevice() : I2CDevice(GetParam()) {}

  bool isSmbusOnly() const { return GetParam() == Kind::kSmbusOnly; }
};

INSTANTIATE_TEST_SUITE_P(, EitherI2CDevice, ::testing::Values(Kind::kPlain, Kind::kSmbusOnly),
                         [](const auto& info) {
                           return info.param == Kind::kPlain ? "PlainI2C" : "SmbusOnly";
                         });

struct PlainI2CDevice : ::testing::Test, I2CDevice {
  PlainI2CDevice() : I2CDevice(Kind::kPlain) {}
};

struct SmbusDevice : ::testing::Test, I2CDevice {
  SmbusDevice() : I2CDevice(Kind::kSmbusOnly) {}
};

TEST_P(EitherI2CDevice, ReadsRegistersInOneTransfer) {
  registers_[6] = 0xA5;
  registers_[7] = 0x3C;
  unsigned char buffer[3] = {0, 0, 0xEE};
  EXPECT_EQ(device_.read(buffer, 2, kRegister, 1), 2);
  EXPECT_THAT(buffer, ElementsAre(0xA5, 0x3C, 0xEE));
  EXPECT_THAT(adapter_.transfers, ElementsAre("S 21W 06 Sr 21R [a5] [3c] P"));
}

TEST_P(EitherI2CDevice, WritesBytesInOneTransfer) {
  constexpr unsigned char kBytes[] = {2, 0x55, 0xFE};
  EXPECT_EQ(device_.write(kBytes, 3), 3);
  EXPECT_EQ(registers_[2], 0x55);
  EXPECT_EQ(registers_[3], 0xFE);
  EXPECT_EQ(registers_[4], 0);
  EXPECT_THAT(adapter_.transfers, ElementsAre("S 21W 02 55 fe P"));
}

TEST_P(EitherI2CDevice, WritesALoneByte) {
  constexpr unsigned char kByte[] = {9};
  EXPECT_EQ(device_.write(kByte, 1), 1);
  EXPECT_THAT(adapter_.transfers, ElementsAre("S 21W 09 P"));
}

TEST_P(EitherI2CDevice, SendsNothingForACountOfZero) {
  unsigned char buffer[1];
  EXPECT_EQ(device_.read(buffer, 0, kRegister, 1), 0);
  EXPECT_EQ(device_.write(buffer, 0), 0);
  EXPECT_EQ(device_.read(nullptr, 0, kRegister, 1), 0);
  EXPECT_EQ(device_.write(nullptr, 0), 0);
  EXPECT_THAT(adapter_.transfers, IsEmpty());
}

TEST_P(EitherI2CDevice, RefusesWhatIsNoBuffer) {
  unsigned char buffer[1];
  EXPECT_EQ(device_.read(buffer, -1, kRegister, 1), -EINVAL);
  EXPECT_EQ(device_.read(buffer, 1, kRegister, -1), -EINVAL);
  EXPECT_EQ(device_.read(nullptr, 1, kRegister, 1), -EINVAL);
  EXPECT_EQ(device_.read(buffer, 1, nullptr, 1), -EINVAL);
  EXPECT_EQ(device_.write(buffer, -1), -EINVAL);
  EXPECT_EQ(device_.write(nullptr, 1), -EINVAL);
  EXPECT_THAT(adapter_.transfers, IsEmpty());
}

TEST_P(EitherI2CDevice, CarriesAsMuchAsTheAdapterDoes) {
  const int longestRead = isSmbusOnly() ? 32 : 8192;
  const int longestWrite = isSmbusOnly() ? 33 : 8192;
  std::vector<unsigned char> buffer(8194);
  EXPECT_EQ(device_.read(buffer.data(), longestRead, kRegister, 1), longestRead);
  EXPECT_EQ(device_.write(buffer.data(), longestWrite), longestWrite);
  EXPECT_EQ(adapter_.transfers.size(), 2);
  EXPECT_EQ(device_.read(buffer.data(), longestRead + 1, kRegister, 1), -EINVAL);
  EXPECT_EQ(device_.write(buffer.data(), longestWrite + 1), -EINVAL);
  EXPECT_EQ(adapter_.transfers.size(), 2);
}

TEST_P(EitherI2CDevice, Carries32DataBytesBothWays) {
  const std::vector<unsigned char> written = ascending(33);  // The first is the register.
  ASSERT_EQ(device_.write(written.data(), 33), 33);
  std::vector<unsigned char> read(32);
  ASSERT_EQ(device_.read(read.data(), 32, written.data(), 1), 32);
  EXPECT_EQ(read, std::vector<unsigned char>(written.begin() + 1, written.end()));
}

TEST_P(EitherI2CDevice, ReportsASlaveThatDoesNotAcknowledge) {
  constexpr int kAbsent = 0x50;
  ASSERT_EQ(device_.open(kAbsent), 0);
  unsigned char buffer[2] = {0x11, 0x22};
  EXPECT_EQ(device_.read(buffer, 2, kRegister, 1), -ENXIO);
  EXPECT_THAT(buffer, ElementsAre(0x11, 0x22));
  ASSERT_EQ(device_.open(kAbsent), 0);
  EXPECT_EQ(device_.write(buffer, 2), -ENXIO);
  EXPECT_EQ(device_.write(buffer, 1), -ENXIO);
  EXPECT_THAT(adapter_.transfers, ElementsAre("S 50W N P", "S 50W N P", "S 50W N P"));
}

TEST_P(EitherI2CDevice, WritesNothingFromAFailedReadToTheNextGoodOne) {
  constexpr unsigned char kBytes[] = {6, 0xFF, 0xFE};
  unsigned char buffer[2];
  const auto failToRead = [&] {
    adapter_.isBroken = true;
    EXPECT_EQ(device_.read(buffer, 2, kRegister, 1), -EIO);
    adapter_.isBroken = false;
  };
  failToRead();
  EXPECT_EQ(device_.write(kBytes, 3), -EIO);
  EXPECT_EQ(device_.read(buffer, 0, kRegister, 1), 0) << "reads nothing";
  EXPECT_EQ(device_.write(kBytes, 3), -EIO);
  EXPECT_THAT(adapter_.transfers, IsEmpty());
  EXPECT_EQ(device_.read(buffer, 2, kRegister, 1), 2);
  EXPECT_EQ(device_.write(kBytes, 3), 3);
  failToRead();
  ASSERT_EQ(device_.open(kAddress), 0);
  EXPECT_EQ(device_.write(kBytes, 3), 3);
  EXPECT_EQ(adapter_.transfers.size(), 3);
}

TEST_P(EitherI2CDevice, ReportsAnAdapterThatFails) {
  adapter_.isBroken = true;
  unsigned char buffer[2];
  EXPECT_EQ(device_.read(buffer, 2, kRegister, 1), -EIO);
  EXPECT_EQ(device_.write(kRegister, 1), -EIO);
}

TEST_P(EitherI2CDevice, ClosesTheBusWhenItGoes) {
  {
    I2CDev another(kPath);
    ASSERT_EQ(another.open(kAddress), 0);
    EXPECT_EQ(adapter_.openCount(), 2);
    ASSERT_EQ(another.open(kAddress), 0);
    EXPECT_EQ(adapter_.openCount(), 2);
  }
  EXPECT_EQ(adapter_.openCount(), 1);
}

TEST_P(EitherI2CDevice, IsClosedAfterAFailedOpen) {
  adapter_.addressOfDriver = 0x22;
  EXPECT_EQ(device_.open(0x22), -EBUSY);
  EXPECT_EQ(adapter_.openCount(), 0);
  unsigned char buffer[1];
  EXPECT_EQ(device_.read(buffer, 1, kRegister, 1), -EBADF);
  EXPECT_EQ(device_.write(buffer, 1), -EBADF);
}

TEST_F(PlainI2CDevice, ReadsWithSeveralRegisterBytes) {
  registers_[0x35] = 0x77;
  unsigned char byte = 0;
  constexpr unsigned char kTwoBytes[] = {0x34, 0x12};
  EXPECT_EQ(device_.read(&byte, 1, kTwoBytes, 2), 1);
  EXPECT_EQ(byte, 0x77);
  EXPECT_THAT(adapter_.transfers, ElementsAre("S 21W 34 12 Sr 21R [77] P"));
}

TEST_F(PlainI2CDevice, ReadsWithoutARegister) {
  registers_[0] = 0x42;
  unsigned char byte = 0;
  EXPECT_EQ(device_.read(&byte, 1, nullptr, 0), 1);
  EXPECT_EQ(byte, 0x42);
  EXPECT_THAT(adapter_.transfers, ElementsAre("S 21R [42] P"));
}

TEST_F(PlainI2CDevice, ReportsATransferThatEndsHalfWay) {
  adapter_.stopsAfterOneMessage = true;
  unsigned char byte = 0;
  EXPECT_EQ(device_.read(&byte, 1, kRegister, 1), -EIO);
}

TEST_F(SmbusDevice, NeedsOneRegisterByte) {
  unsigned char byte = 0;
  constexpr unsigned char kTwoBytes[] = {0x34, 0x12};
  EXPECT_EQ(device_.read(&byte, 1, kTwoBytes, 2), -EINVAL);
  EXPECT_EQ(device_.read(&byte, 1, nullptr, 0), -EINVAL);
  EXPECT_THAT(adapter_.transfers, IsEmpty());
}

TEST(I2CDev, DoesNotOpenAnAdapterWithoutBlockTransfers) {
  FakeI2CAdapter adapter(kPath, Kind::kSmbusWithoutBlocks);
  I2CDev device(kPath);
  EXPECT_EQ(device.open(kAddress), -EOPNOTSUPP);
  EXPECT_EQ(adapter.openCount(), 0);
}

TEST(I2CDev, DoesNotOpenWhatIsMissing) {
  const TemporaryFolder folder;
  I2CDev device(folder / "i2c-3");
  EXPECT_EQ(device.open(kAddress), -ENOENT);
}

TEST(I2CDev, DoesNotOpenWhatIsNoI2CBus) {
  I2CDev folder("/dev/");
  EXPECT_EQ(folder.open(kAddress), -EISDIR);
  I2CDev null("/dev/null");
  EXPECT_EQ(null.open(kAddress), -ENOTTY);
}

TEST(I2CDev, DoesNotOpenForAnAddressOfMoreThanSevenBits) {
  FakeI2CAdapter adapter(kPath, Kind::kPlain);
  I2CDev device(kPath);
  EXPECT_EQ(device.open(0x80), -EINVAL);
  EXPECT_EQ(device.open(-1), -EINVAL);
  EXPECT_EQ(device.open(0x7F), 0);
}

TEST(I2CDev, TransfersNothingBeforeItIsOpen) {
  FakeI2CAdapter adapter(kPath, Kind::kPlain);
  I2CDev device(kPath);
  unsigned char byte = 0;
  EXPECT_EQ(device.read(&byte, 1, kRegister, 1), -EBADF);
  EXPECT_EQ(device.write(&byte, 1), -EBADF);
  EXPECT_EQ(adapter.openCount(), 0);
}

}  // namespace
}  // namespace orb::test
