#include "orb-gnss/module_driver.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>
#include <optional>
#include <string>
#include <type_traits>

#include "support/closed_standard_streams.h"
#include "support/receiver_fixture.h"

namespace orb::test {
namespace {

using testing::ElementsAre;
using testing::Truly;

class ModuleDriver : public ReceiverTest {
 protected:
  StampedDriver driver_;
};

class ModuleDriverWithoutReceiver : public NoReceiverTest {
 protected:
  /// Expects that a restart is reported as not sent; returns what is said on standard error.
  static std::string failToRestart(orbController_QN4470T01& driver) {
    return standardErrorOf([&] { EXPECT_EQ(driver.restart(true), 8u); });
  }
};

constexpr const char* kRestartNotSent = "STAMP:  Could not send : 64 3F: Unknown message type\n";

// Operations that send nothing.

TEST_F(ModuleDriver, HasNoUseForSomeOperations) {
  bool on = true;
  const std::string error = standardErrorOf([&] {
    EXPECT_EQ(standardOutputOf([&] {
                driver_.Init();
                EXPECT_EQ(driver_.save(), 0u);
                EXPECT_EQ(driver_.load(), 0u);
                EXPECT_EQ(driver_.turnOff(), 0u);
                EXPECT_EQ(driver_.turnOn(), 0u);
                EXPECT_EQ(driver_.isOn(on), 0u);
                EXPECT_EQ(driver_.setUtcStandardAuto(), 0u);
                EXPECT_EQ(driver_.setUtsStandardTime(-3), 0u);
                EXPECT_EQ(driver_.configureProtocols(), 0u);
                EXPECT_EQ(driver_.configExtendedPowerManagment(), 0u);
                EXPECT_EQ(driver_.getUtcGrid(7), 0u);
                EXPECT_EQ(driver_.programGroupDelayCal(-7), 0u);
                driver_.gpsObtGetTimeMode();
              }),
              "");
  });
  EXPECT_EQ(error, "");
  EXPECT_TRUE(on);
  EXPECT_EQ(sent(), "");
  EXPECT_EQ(contentOf(files_.errorLog), "");
}

TEST_F(ModuleDriver, SupportsNoAntennaType) {
  std::string type = "before";
  EXPECT_EQ(driver_.setAntennaType("active"), 256u);
  EXPECT_EQ(driver_.getAntennaType(type), 256u);
  EXPECT_EQ(type, "before");
  EXPECT_EQ(sent(), "");
  EXPECT_EQ(contentOf(files_.errorLog), "");
}

TEST_F(ModuleDriver, StartsWithoutVersion) {
  EXPECT_EQ(driver_.kernelVersion, "");
  EXPECT_EQ(driver_.odmVersion, "");
  EXPECT_EQ(driver_.revision, "");
  EXPECT_EQ(driver_.revisionNumber, 0);
}

TEST_F(ModuleDriver, IsNeitherCopiedNorFinal) {
  EXPECT_FALSE(std::is_copy_constructible_v<orbController_QN4470T01>);
  EXPECT_FALSE(std::is_final_v<orbController_QN4470T01>);
}

// Sending a message of the caller's.

TEST_F(ModuleDriver, SendsAnyMessage) {
  gps_.script.onAny().nothing();  // for no acknowledgement is waited
  EXPECT_EQ(driver_.sendORBMessage(ORBMessage(0x6502, 2, nullptr)), 0u);
  EXPECT_EQ(sent(), "A0 A1 00 02 65 02 67 0D 0A");
}

TEST_F(ModuleDriverWithoutReceiver, AnswersZeroToAMessageThatItCannotSendAndLogsIt) {
  StampedDriver driver;
  EXPECT_EQ(standardErrorOf(
                [&] { EXPECT_EQ(driver.sendORBMessage(ORBMessage(0x6502, 2, nullptr)), 0u); }),
            kNoDevice);
  EXPECT_EQ(contentOf(files_.errorLog),
            "STAMP:  Could not send : 65 02: Query 1PPS pulse width of GNSS receiver \n");
}

// The device.

// The line holds one descriptor of its own.
TEST_F(ModuleDriver, HoldsTheDeviceOpenDuringAnExchangeOnly) {
  struct DriverThatLooks : StampedDriver {
    explicit DriverThatLooks(const std::filesystem::path& tty) : tty_(tty) {}
    std::string timeStamp() override {
      descriptors = descriptorsOf(tty_);
      return StampedDriver::timeStamp();
    }
    int descriptors = 0;
    const std::filesystem::path& tty_;
  };
  DriverThatLooks driver(files_.tty);
  EXPECT_EQ(descriptorsOf(files_.tty), 1);
  gps_.script.on(0x0200).nothing();
  letPass(1);
  standardErrorOf([&] { driver.gpsObtChipDetect(); });
  EXPECT_EQ(driver.descriptors, 2);
  EXPECT_EQ(descriptorsOf(files_.tty), 1);
}

// The error log.

TEST_F(ModuleDriverWithoutReceiver, MakesTheErrorLogWhenItIsConstructed) {
  {
    orbController_QN4470T01 driver;
    EXPECT_EQ(descriptorsOf(files_.errorLog), 1);
  }
  EXPECT_EQ(descriptorsOf(files_.errorLog), 0);
  EXPECT_EQ(contentOf(files_.errorLog), "");
}

// The driver lives on while the log is read.
TEST_F(ModuleDriverWithoutReceiver, AddsLinesToWhatTheErrorLogHoldsAndFlushesEach) {
  fill(files_.errorLog, "earlier line\n");
  StampedDriver driver;
  failToRestart(driver);
  EXPECT_EQ(contentOf(files_.errorLog), std::string("earlier line\n") + kRestartNotSent);
  failToRestart(driver);
  EXPECT_EQ(contentOf(files_.errorLog),
            std::string("earlier line\n") + kRestartNotSent + kRestartNotSent);
}

// Files may grow to the log's present size, as on a disk that is full.
TEST_F(ModuleDriverWithoutReceiver, GoesOnWithTheErrorLogWhenThereIsRoomAgain) {
  constexpr rlim_t kPresentSize = 1 << 16;  // more than what standard error is captured in needs
  fill(files_.errorLog, std::string(kPresentSize, '.'));
  StampedDriver driver;
  const auto onFull = std::signal(SIGXFSZ, SIG_IGN);
  rlimit usual{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &usual), 0);
  const rlimit full{kPresentSize, usual.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
  failToRestart(driver);
  EXPECT_EQ(std::filesystem::file_size(files_.errorLog), kPresentSize);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &usual), 0);
  std::signal(SIGXFSZ, onFull);
  failToRestart(driver);
  EXPECT_TRUE(contentOf(files_.errorLog).ends_with(kRestartNotSent));
}

TEST_F(ModuleDriverWithoutReceiver, KeepsTheErrorLogToItself) {
  {
    const StampedDriver driver;
    EXPECT_THAT(descriptorsOn(files_.errorLog), ElementsAre(Truly(isPrivate)));
  }
  std::optional<ClosedStandardStreams> closed(std::in_place);
  const StampedDriver driver;
  closed.reset();
  EXPECT_THAT(descriptorsOn(files_.errorLog), ElementsAre(Truly(isPrivate)));
}

TEST_F(ModuleDriverWithoutReceiver, StampsTheErrorLogWithItsOwnTime) {
  orbController_QN4470T01 driver;
  failToRestart(driver);
  EXPECT_EQ(contentOf(files_.errorLog),
            "14:03:27_042:  Could not send : 64 3F: Unknown message type\n");
}

TEST_F(ModuleDriverWithoutReceiver, ReportsAFailureWithoutErrorLogToo) {
  files_.makeUnusable("/var/log/orbset-errors.log");
  StampedDriver driver;
  EXPECT_EQ(failToRestart(driver), kNoDevice);
  EXPECT_EQ(failToRestart(driver), kNoDevice);
}

// A device that opens and takes nothing.
TEST_F(ModuleDriverWithoutReceiver, ReportsADeviceThatIsNoTty) {
  fill(files_.tty, "");
  StampedDriver driver;
  EXPECT_EQ(failToRestart(driver),
            "Can't get gps_tty settings\n"
            "Cannot send message to the orbitek, the device is not open!\n");
  EXPECT_EQ(contentOf(files_.tty), "");
}

}  // namespace
}  // namespace orb::test
