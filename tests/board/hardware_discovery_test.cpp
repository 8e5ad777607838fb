#include "orb-gnss/hardware_discovery.h"

#include <gtest/gtest.h>

#include <iostream>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/captured_stream.h"
#include "support/fake_board.h"

namespace orb::test {
namespace {

using Calls = std::vector<std::string>;

const Calls kInventoryAlone = {"inventory client", "locations", "end of inventory client"};

class HardwareDiscovery : public testing::Test {
 protected:
  HardwareDiscovery() {
    board_.modules[3] = {
        {{"HardwareSetId", "47205318-001"}, {"PcieEndpoints", "2"}}, 2, "i2c-7", "spidev1.0"};
  }

  /// Expects that the module at location 3 was asked for just this.
  void expectAsked(const Calls& questions) const {
    Calls expected = kInventoryAlone;
    expected.insert(expected.end(), {"resources client", "address 3"});
    expected.insert(expected.end(), questions.begin(), questions.end());
    expected.push_back("end of resources client");
    EXPECT_EQ(board_.calls, expected);
  }

  /// Expects that `ask` left it at the locations.
  template <typename Question>
  void expectOnlyLocations(Question ask) {
    board_.calls.clear();
    ask();
    EXPECT_EQ(board_.calls, kInventoryAlone);
  }

  /// Expects that the BARs of the module at location 3 agree with its record, without a word.
  void expectMatch() {
    CapturedStream output(std::cout);
    EXPECT_TRUE(checkForEndpointInEEPROM(3));
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(output.flushes(), 0);
  }

  FakeBoard board_;
};

// Locations.

TEST_F(HardwareDiscovery, KnowsWhichLocationsArePopulatedAndAsksTheInventoryAlone) {
  board_.modules[0xFFFFFFFF];
  // Locations are compared as 32 bits.
  for (const auto& [location, isPopulated] :
       {std::pair{3, true}, {-1, true}, {0, false}, {2, false}, {-3, false}}) {
    expectOnlyLocations([&, location = location, isPopulated = isPopulated] {
      EXPECT_EQ(checkAddress(location), isPopulated) << location;
    });
  }
  board_.modules.clear();
  EXPECT_FALSE(checkAddress(0));
  EXPECT_FALSE(checkAddress(3));
}

// An empty location.

TEST_F(HardwareDiscovery, AnswersNothingForAnEmptyLocationAndAsksForNothing) {
  CapturedStream output(std::cout);
  expectOnlyLocations([] { EXPECT_EQ(getModuleHardwareID(1), ""); });
  expectOnlyLocations([] { EXPECT_EQ(getSolutionI2C(1), ""); });
  expectOnlyLocations([] { EXPECT_EQ(getSolutionSpiDev(1), ""); });
  expectOnlyLocations([] { EXPECT_FALSE(checkForEndpointInEEPROM(1)); });
  EXPECT_EQ(output.text(), "");
}

// The hardware set id.

TEST_F(HardwareDiscovery, ReadsTheHardwareSetIdWhateverItIs) {
  EXPECT_EQ(getModuleHardwareID(3), "47205318-001");
  expectAsked({"record HardwareSetId"});
  board_.modules[3].records["HardwareSetId"] = " two\nlines ";
  EXPECT_EQ(getModuleHardwareID(3), " two\nlines ");
  board_.modules[3].records.erase("HardwareSetId");
  EXPECT_EQ(getModuleHardwareID(3), "");
}

TEST_F(HardwareDiscovery, TakesARecordOfAnyTypeButZero) {
  for (const int type : {-1, 2, -2147483647}) {
    board_.modules[3].recordType = type;
    EXPECT_EQ(getModuleHardwareID(3), "47205318-001") << type;
    expectMatch();
  }
  board_.modules[3].recordType = 0;
  EXPECT_EQ(getModuleHardwareID(3), "");
}

// Bus and device.

TEST_F(HardwareDiscovery, ReadsTheI2cBus) {
  EXPECT_EQ(getSolutionI2C(3), "i2c-7");
  expectAsked({"I2C bus"});
  board_.modules[4];
  EXPECT_EQ(getSolutionI2C(4), "");
}

TEST_F(HardwareDiscovery, ReadsTheSpiDevice) {
  EXPECT_EQ(getSolutionSpiDev(3), "spidev1.0");
  expectAsked({"SPI device"});
  board_.modules[4];
  EXPECT_EQ(getSolutionSpiDev(4), "");
}

// The PCIe endpoint.

class PcieEndpoint : public HardwareDiscovery {
 protected:
  void describe(const std::string& record, std::size_t barCount) {
    board_.modules[3].records["PcieEndpoints"] = record;
    board_.modules[3].barCount = barCount;
  }

  /// That the record does not agree with the BARs, and what is said about it, without a flush.
  void expectMismatch(const std::string& text) {
    CapturedStream output(std::cout);
    EXPECT_FALSE(checkForEndpointInEEPROM(3));
    EXPECT_EQ(output.text(), text);
    EXPECT_EQ(output.flushes(), 0);
  }
};

TEST_F(PcieEndpoint, AgreesWithItsRecordOrDiffersFromIt) {
  expectMatch();
  expectAsked({"record PcieEndpoints", "BARs"});
  describe("0", 0);
  expectMatch();
  describe("3", 2);
  expectMismatch("BAR size in eeprom record 3 does not match actual BAR size 2");
  describe("0", 1);
  expectMismatch("BAR size in eeprom record 0 does not match actual BAR size 1");
}

TEST_F(PcieEndpoint, IsComparedByTheLow32BitsOfTheNumberThatTheRecordStartsWith) {
  for (const char* record : {" \t\n2 BARs of 4", "2.9", "+2", "4294967298",  // 2^32 + 2
                             "18446744069414584322"}) {                      // 2^64 - 2^32 + 2
    describe(record, 2);
    expectMatch();
  }
  describe("0x2", 0);
  expectMatch();
}

TEST_F(PcieEndpoint, IsShownAsSignedNumber) {
  describe("4294967295", 2);
  expectMismatch("BAR size in eeprom record -1 does not match actual BAR size 2");
  describe("2147483648", 0);
  expectMismatch("BAR size in eeprom record -2147483648 does not match actual BAR size 0");
  describe("-3", 1);
  expectMismatch("BAR size in eeprom record -3 does not match actual BAR size 1");
}

TEST_F(PcieEndpoint, IsShownInDecimalWhateverTheStreamIsSetTo) {
  describe("30", 20);
  CapturedStream output(std::cout);
  std::cout << std::hex << std::showbase << std::showpos;
  EXPECT_FALSE(checkForEndpointInEEPROM(3));
  EXPECT_EQ(output.text(), "BAR size in eeprom record 30 does not match actual BAR size 20");
}

TEST_F(PcieEndpoint, WithoutRecordIsReportedAndThenCannotBeRead) {
  board_.modules[3].records.erase("PcieEndpoints");
  CapturedStream output(std::cout);
  EXPECT_THROW(checkForEndpointInEEPROM(3), std::invalid_argument);
  EXPECT_EQ(output.text(), "Could not find PcieEndpoints record\n");
  EXPECT_EQ(output.flushedText(), "Could not find PcieEndpoints record\n");
  expectAsked({"record PcieEndpoints", "BARs"});
}

TEST_F(PcieEndpoint, CannotBeReadFromARecordThatDoesNotStartWithANumber) {
  for (const char* record : {"", "two", "BAR 2", ".2"}) {
    describe(record, 2);
    CapturedStream output(std::cout);
    EXPECT_THROW(checkForEndpointInEEPROM(3), std::invalid_argument) << record;
    EXPECT_EQ(output.text(), "") << record;
  }
}

TEST_F(PcieEndpoint, CannotBeReadFromANumberThatIsTooLarge) {
  describe("18446744073709551616", 2);  // 2^64
  CapturedStream output(std::cout);
  EXPECT_THROW(checkForEndpointInEEPROM(3), std::out_of_range);
  EXPECT_EQ(output.text(), "");
}

// Exceptions of the platform classes.

class FailingDiscovery : public HardwareDiscovery,
                         public testing::WithParamInterface<const char*> {};

TEST_P(FailingDiscovery, PassesTheExceptionOnAndReleasesTheClients) {
  board_.failingCall = GetParam();
  const auto ask = [] {
    getModuleHardwareID(3);
    getSolutionI2C(3);
    getSolutionSpiDev(3);
    checkForEndpointInEEPROM(3);
  };
  EXPECT_THROW(ask(), BoardFailure);
  int open = 0;
  for (const std::string& call : board_.calls) {
    const bool isClient = call.find(" client") != std::string::npos;
    const bool isEnd = call.rfind("end of", 0) == 0;
    const bool isFailed = call == board_.failingCall;
    open += !isClient || isFailed ? 0 : isEnd ? -1 : 1;
  }
  EXPECT_EQ(open, 0);
}

INSTANTIATE_TEST_SUITE_P(, FailingDiscovery,
                         testing::Values("inventory client", "locations", "resources client",
                                         "address 3", "record HardwareSetId", "I2C bus",
                                         "SPI device", "record PcieEndpoints", "BARs"));

}  // namespace
}  // namespace orb::test
