#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "support/operation_matrix.h"

namespace {

using orb::test::bytes;
using orb::test::kNoDevice;
using orb::test::kTimedOut;
using orb::test::Observed;
using orb::test::OperationTest;
using orb::test::Outcome;
using orb::test::Query;
using orb::test::QueryOutcome;
using orb::test::RowName;
using orb::test::Sent;
using orb::test::Setting;
using orb::test::SettingOutcome;

const Sent kQueryWidth{"A0 A1 00 02 65 02 67 0D 0A",
                       "65 02: Query 1PPS pulse width of GNSS receiver "};
const Sent kQueryFrequency{"A0 A1 00 02 65 04 61 0D 0A",
                           "65 04: Query PPS2 frequency output of GNSS receiver "};
const Sent kQueryDelay{"A0 A1 00 01 46 46 0D 0A",
                       "46 00: Query 1PPS cable delay of GNSS receiver "};

Outcome getWidth(orbController_QN4470T01& driver) {
  unsigned int width = 0xABCD1234;
  const unsigned int result = driver.gpsObtGetTimePulse(width);
  return Outcome(result, width);
}

Outcome getFrequency(orbController_QN4470T01& driver) {
  unsigned int frequency = 0xABCD1234;
  const unsigned int result = driver.gpsObtGetFreqOutput(frequency);
  return Outcome(result, frequency);
}

Outcome getCableDelay(orbController_QN4470T01& driver) {
  int delay = 77;
  const unsigned int result = driver.gpsObtGetCableDelayConfig(delay);
  return Outcome(result, delay);
}

Outcome getAntennaDelay(orbController_QN4470T01& driver) {
  int delay = 77;
  const unsigned int result = driver.getAntennaDelay(delay);
  return Outcome(result, delay);
}

// A failed query leaves 0.
std::vector<Query> queries() {
  return {
      {.name = "GetTimePulse",
       .call = getWidth,
       .sends = kQueryWidth,
       .reply = "A0 A1 00 06 65 80 12 34 56 78 ED 0D 0A",
       .answer = {0, "305419896", "pulse_length_us: 305419896\n"},
       .shortReply = "A0 A1 00 04 65 80 00 01 E4 0D 0A",
       .shortAnswer = {0, "65536", "pulse_length_us: 65536\n"},
       .untouched = "0"},
      {.name = "GetFreqOutput",
       .call = getFrequency,
       .sends = kQueryFrequency,
       .reply = "A0 A1 00 06 65 81 12 34 56 78 EC 0D 0A",
       .answer = {0, "305419896", "interval_hz: 305419896\n"},
       .shortReply = "A0 A1 00 04 65 81 00 01 E5 0D 0A",
       .shortAnswer = {0, "65536", "interval_hz: 65536\n"},
       .untouched = "0"},
      {.name = "GetCableDelayConfig",
       .call = getCableDelay,
       .sends = kQueryDelay,
       .reply = "A0 A1 00 05 BB 12 34 56 78 B3 0D 0A",
       .answer = {0, "3054198"},
       .shortReply = "A0 A1 00 03 BB FF FF BB 0D 0A",
       .shortAnswer = {0, "-655"},
       .untouched = "0"},
      {.name = "GetAntennaDelay",
       .call = getAntennaDelay,
       .sends = kQueryDelay,
       .reply = "A0 A1 00 05 BB FF FF F5 10 5E 0D 0A",
       .answer = {0, "-28"},
       .shortReply = "A0 A1 00 01 BB BB 0D 0A",
       .shortAnswer = {0, "0"},
       .untouched = "0"},
  };
}

INSTANTIATE_TEST_SUITE_P(TimingPulse, QueryOutcome, testing::ValuesIn(queries()), RowName());

std::vector<Setting> settings() {
  return {
      {.name = "TimePulseConfigure",
       .call = [](auto& driver) { return Outcome(driver.gpsObtTimePulseConfigure(74565)); },
       .sends = {"A0 A1 00 07 65 01 00 01 23 45 00 03 0D 0A",
                 "65 01: Configure 1PPS pulse width of GNSS receiver "},
       .reads = kQueryWidth,
       .reply = "A0 A1 00 06 65 80 00 01 23 45 82 0D 0A",
       .printed = "pulse_length_us: 74565\n",
       .otherReply = "A0 A1 00 06 65 80 01 01 23 45 83 0D 0A",
       .other = {1, "", "pulse_length_us: 16851781\n"},
       .shortReply = "A0 A1 00 05 65 80 00 01 23 C7 0D 0A",
       .shortAnswer = {1, "", "pulse_length_us: 74496\n"}},
      {.name = "FreqOutputConfigure",
       .call = [](auto& driver) { return Outcome(driver.gpsObtFreqOutputConfigure(16909060)); },
       .sends = {"A0 A1 00 07 65 03 01 02 03 04 00 62 0D 0A",
                 "65 03: Configure PPS2 frequency output of GNSS receiver "},
       .reads = kQueryFrequency,
       .reply = "A0 A1 00 06 65 81 01 02 03 04 E0 0D 0A",
       .printed = "interval_hz: 16909060\n",
       .otherReply = "A0 A1 00 06 65 81 01 02 03 05 E1 0D 0A",
       .other = {1, "", "interval_hz: 16909061\n"},
       .shortReply = "A0 A1 00 05 65 81 01 02 03 E4 0D 0A",
       .shortAnswer = {1, "", "interval_hz: 16909056\n"}},
      // An unanswered read-back leaves 0.
      {.name = "FreqOutputConfigureToZero",
       .call = [](auto& driver) { return Outcome(driver.gpsObtFreqOutputConfigure(0)); },
       .sends = {"A0 A1 00 07 65 03 00 00 00 00 00 66 0D 0A",
                 "65 03: Configure PPS2 frequency output of GNSS receiver "},
       .reads = kQueryFrequency,
       .reply = "A0 A1 00 06 65 81 00 00 00 00 E4 0D 0A",
       .printed = "interval_hz: 0\n",
       .otherReply = "A0 A1 00 06 65 81 00 00 00 01 E5 0D 0A",
       .other = {1, "", "interval_hz: 1\n"},
       .shortReply = "A0 A1 00 02 65 81 E4 0D 0A",
       .shortAnswer = {0, "", "interval_hz: 0\n"},
       .noReply = {4}},
      {.name = "CableDelayConfig",
       .call = [](auto& driver) { return Outcome(driver.gpsObtCableDelayConfig(-5000)); },
       .sends = {"A0 A1 00 06 45 FF F8 5E E0 00 FC 0D 0A",
                 "45 00: Configure cable delay of 1PPS timing "},
       .reads = kQueryDelay,
       .reply = "A0 A1 00 05 BB FF F8 5E E0 02 0D 0A",
       .otherReply = "A0 A1 00 05 BB 00 07 A1 20 3D 0D 0A",
       .shortReply = "A0 A1 00 02 BB FF 44 0D 0A"},
      {.name = "SetAntennaDelay",
       .call = [](auto& driver) { return Outcome(driver.setAntennaDelay(28)); },
       .sends = {"A0 A1 00 06 45 00 00 0A F0 00 BF 0D 0A",
                 "45 00: Configure cable delay of 1PPS timing "},
       .reads = kQueryDelay,
       .reply = "A0 A1 00 05 BB 00 00 0A F0 41 0D 0A",
       .otherReply = "A0 A1 00 05 BB 00 00 0A 8C 3D 0D 0A",
       .shortReply = "A0 A1 00 04 BB 00 00 0A B1 0D 0A"},
      {.name = "SetAntennaDelayToZero",
       .call = [](auto& driver) { return Outcome(driver.setAntennaDelay(0)); },
       .sends = {"A0 A1 00 06 45 00 00 00 00 00 45 0D 0A",
                 "45 00: Configure cable delay of 1PPS timing "},
       .reads = kQueryDelay,
       .reply = "A0 A1 00 05 BB 00 00 00 00 BB 0D 0A",
       .otherReply = "A0 A1 00 05 BB 00 00 00 64 DF 0D 0A",
       .shortReply = "A0 A1 00 01 BB BB 0D 0A",
       .shortAnswer = {0},
       .noReply = {4}},
  };
}

INSTANTIATE_TEST_SUITE_P(TimingPulse, SettingOutcome, testing::ValuesIn(settings()), RowName());

struct Decoded {
  const char* reply;
  const char* value;
  const char* printed = "";
};

class TimingPulse : public OperationTest {
 protected:
  void expectDecoded(const Decoded& row, const Sent& query, const orb::test::Call& call) {
    onPacket(query.packet).answer(bytes(row.reply));
    EXPECT_EQ(observe(call), (Observed{.outputs = row.value,
                                       .standardOutput = row.printed,
                                       .line = {"open", query.packet}}));
  }

  void expectRejectedUnsent(const orb::test::Call& call) {
    connectReceiver();
    EXPECT_EQ(observe(call), (Observed{.result = 1}));
  }
};

// The width of the 1PPS pulse.

TEST_F(TimingPulse, WidthIsUnsignedAndPrintedAsIfItWereSigned) {
  for (const Decoded& row :
       {Decoded{"A0 A1 00 06 65 80 00 00 00 00 E5 0D 0A", "0", "pulse_length_us: 0\n"},
        Decoded{"A0 A1 00 06 65 80 00 00 00 FF 1A 0D 0A", "255", "pulse_length_us: 255\n"},
        Decoded{"A0 A1 00 06 65 80 7F FF FF FF 65 0D 0A", "2147483647",
                "pulse_length_us: 2147483647\n"},
        Decoded{"A0 A1 00 06 65 80 80 00 00 00 65 0D 0A", "2147483648",
                "pulse_length_us: -2147483648\n"},
        Decoded{"A0 A1 00 06 65 80 FF FF FF FF E5 0D 0A", "4294967295", "pulse_length_us: -1\n"}}) {
    expectDecoded(row, kQueryWidth, getWidth);
  }
}

TEST_F(TimingPulse, WidthReachesFromOneToAHundredThousand) {
  connectReceiver();
  for (const auto& [width, packet] : {std::pair{1U, "A0 A1 00 07 65 01 00 00 00 01 00 65 0D 0A"},
                                      {256U, "A0 A1 00 07 65 01 00 00 01 00 00 65 0D 0A"},
                                      {99999U, "A0 A1 00 07 65 01 00 01 86 9F 00 7C 0D 0A"},
                                      {100000U, "A0 A1 00 07 65 01 00 01 86 A0 00 43 0D 0A"}}) {
    EXPECT_EQ(observe([width = width](auto& driver) {
                return Outcome(driver.gpsObtTimePulseConfigure(width));
              }),
              (Observed{.standardOutput = "pulse_length_us: " + std::to_string(width) + "\n",
                        .line = {"open", packet + (" " + kQueryWidth.packet)}}));
    EXPECT_EQ(gps_.receiver.state().ppsPulseWidth, width);
  }
}

TEST_F(TimingPulse, WidthIsRejectedOutsideThatWithTheDeviceLeftClosed) {
  for (const unsigned int width : {0U, 100001U, 0x01000001U, 0x80000000U, 0xFFFFFFFFU}) {
    expectRejectedUnsent(
        [&](auto& driver) { return Outcome(driver.gpsObtTimePulseConfigure(width)); });
  }
}

/// Plugs the device in as soon as the first failure is logged: between a setting and its read-back.
class LatePlug : public orb::test::StampedDriver {
 public:
  explicit LatePlug(std::function<void()> plugIn) : plugIn_(std::move(plugIn)) {}
  std::string timeStamp() override {
    if (plugIn_) {
      std::exchange(plugIn_, nullptr)();
    }
    return StampedDriver::timeStamp();
  }

 private:
  std::function<void()> plugIn_;
};

TEST_F(TimingPulse, WidthThatCouldNotBeSentIsReadBackOverAChannelOfItsOwn) {
  unplug();
  onPacket(kQueryWidth.packet).answer(bytes("A0 A1 00 06 65 80 00 00 00 01 E4 0D 0A"));
  LatePlug driver([&] { plugIn(); });
  EXPECT_EQ(observe(driver, [](auto& late) { return Outcome(late.gpsObtTimePulseConfigure(1)); }),
            (Observed{.result = 8,
                      .standardOutput = "pulse_length_us: 1\n",
                      .standardError = kNoDevice,
                      .errorLog = "STAMP:  Could not send : "
                                  "65 01: Configure 1PPS pulse width of GNSS receiver \n",
                      .line = {"open", kQueryWidth.packet}}));
}

TEST_F(TimingPulse, WidthAddsUpAFailedSettingAndAMissingReadBack) {
  unplug();
  LatePlug driver([&] {
    plugIn();
    letWaitsEnd();
  });
  EXPECT_EQ(observe(driver, [](auto& late) { return Outcome(late.gpsObtTimePulseConfigure(1)); }),
            (Observed{.result = 8 | 4 | 1,
                      .standardError = std::string(kNoDevice) + kTimedOut,
                      .errorLog = "STAMP:  Could not send : "
                                  "65 01: Configure 1PPS pulse width of GNSS receiver \n"
                                  "STAMP:  Did not receive : " +
                                  kQueryWidth.description + "\n",
                      .line = {"open", kQueryWidth.packet}}));
  EXPECT_EQ(waitsEnded(), 1);
}

// The frequency of the second pulse output.

TEST_F(TimingPulse, FrequencyIsUnsignedAndPrintedAsIfItWereSigned) {
  for (const Decoded& row :
       {Decoded{"A0 A1 00 06 65 81 00 00 00 00 E4 0D 0A", "0", "interval_hz: 0\n"},
        Decoded{"A0 A1 00 06 65 81 00 00 00 FF 1B 0D 0A", "255", "interval_hz: 255\n"},
        Decoded{"A0 A1 00 06 65 81 7F FF FF FF 64 0D 0A", "2147483647",
                "interval_hz: 2147483647\n"},
        Decoded{"A0 A1 00 06 65 81 80 00 00 00 64 0D 0A", "2147483648",
                "interval_hz: -2147483648\n"},
        Decoded{"A0 A1 00 06 65 81 FF FF FF FF E4 0D 0A", "4294967295", "interval_hz: -1\n"}}) {
    expectDecoded(row, kQueryFrequency, getFrequency);
  }
}

TEST_F(TimingPulse, FrequencyReachesFromZeroToItsHighest) {
  connectReceiver();
  for (const auto& [frequency, packet] :
       {std::pair{0U, "A0 A1 00 07 65 03 00 00 00 00 00 66 0D 0A"},
        {1U, "A0 A1 00 07 65 03 00 00 00 01 00 67 0D 0A"},
        {19199999U, "A0 A1 00 07 65 03 01 24 F7 FF 00 4B 0D 0A"},
        {19200000U, "A0 A1 00 07 65 03 01 24 F8 00 00 BB 0D 0A"}}) {
    EXPECT_EQ(observe([frequency = frequency](auto& driver) {
                return Outcome(driver.gpsObtFreqOutputConfigure(frequency));
              }),
              (Observed{.standardOutput = "interval_hz: " + std::to_string(frequency) + "\n",
                        .line = {"open", packet + (" " + kQueryFrequency.packet)}}));
    EXPECT_EQ(gps_.receiver.state().pps2Frequency, frequency);
  }
}

TEST_F(TimingPulse, FrequencyIsRejectedAboveThatWithTheDeviceLeftClosed) {
  for (const unsigned int frequency : {19200001U, 0x80000000U, 0xFFFFFFFFU}) {
    expectRejectedUnsent(
        [&](auto& driver) { return Outcome(driver.gpsObtFreqOutputConfigure(frequency)); });
  }
}

// The cable delay.

constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

TEST_F(TimingPulse, CableDelayIsSignedAndCutToWholeNanoseconds) {
  for (const Decoded& row : {Decoded{"A0 A1 00 05 BB 00 00 00 00 BB 0D 0A", "0"},
                             Decoded{"A0 A1 00 05 BB 00 00 00 63 D8 0D 0A", "0"},
                             Decoded{"A0 A1 00 05 BB 00 00 00 64 DF 0D 0A", "1"},
                             Decoded{"A0 A1 00 05 BB 00 00 00 96 2D 0D 0A", "1"},
                             Decoded{"A0 A1 00 05 BB FF FF FF 9D D9 0D 0A", "0"},
                             Decoded{"A0 A1 00 05 BB FF FF FF 9C D8 0D 0A", "-1"},
                             Decoded{"A0 A1 00 05 BB FF FF FF 6A 2E 0D 0A", "-1"},
                             Decoded{"A0 A1 00 05 BB FF FF FF 38 7C 0D 0A", "-2"},
                             Decoded{"A0 A1 00 05 BB 7F FF FF FF 3B 0D 0A", "21474836"},
                             Decoded{"A0 A1 00 05 BB 80 00 00 00 3B 0D 0A", "-21474836"}}) {
    expectDecoded(row, kQueryDelay, getCableDelay);
    expectDecoded(row, kQueryDelay, getAntennaDelay);
  }
}

struct Delay {
  int delay;
  const char* packet;
};

TEST_F(TimingPulse, CableDelayReachesFiveMicrosecondsBothWays) {
  connectReceiver();
  for (const Delay& row : {Delay{-5000, "A0 A1 00 06 45 FF F8 5E E0 00 FC 0D 0A"},
                           Delay{-4999, "A0 A1 00 06 45 FF F8 5F 44 00 59 0D 0A"},
                           Delay{-1, "A0 A1 00 06 45 FF FF FF 9C 00 26 0D 0A"},
                           Delay{0, "A0 A1 00 06 45 00 00 00 00 00 45 0D 0A"},
                           Delay{1, "A0 A1 00 06 45 00 00 00 64 00 21 0D 0A"},
                           Delay{4999, "A0 A1 00 06 45 00 07 A0 BC 00 5E 0D 0A"},
                           Delay{5000, "A0 A1 00 06 45 00 07 A1 20 00 C3 0D 0A"}}) {
    const Observed expected{.line = {"open", row.packet + (" " + kQueryDelay.packet)}};
    EXPECT_EQ(
        observe([&](auto& driver) { return Outcome(driver.gpsObtCableDelayConfig(row.delay)); }),
        expected);
    EXPECT_EQ(observe([&](auto& driver) { return Outcome(driver.setAntennaDelay(row.delay)); }),
              expected);
    EXPECT_EQ(gps_.receiver.state().cableDelay, row.delay * 100);
  }
}

TEST_F(TimingPulse, CableDelayIsRejectedOutsideThatWithTheDeviceLeftClosed) {
  for (const int delay : {-5001, 5001, -100000, 100000, 21474836, 21474837, 42944672, 42954673,
                          -42944672, -42954673, kHighest - 5000, kLowest + 5001}) {
    expectRejectedUnsent(
        [&](auto& driver) { return Outcome(driver.gpsObtCableDelayConfig(delay)); });
    expectRejectedUnsent([&](auto& driver) { return Outcome(driver.setAntennaDelay(delay)); });
  }
}

// Times 100, these wrap into the range. What is read back is then not what was asked for.
TEST_F(TimingPulse, CableDelayThatWrapsIntoTheRangeIsSentAsItsWrappedProduct) {
  connectReceiver();
  for (const Delay& row : {Delay{42949672, "A0 A1 00 06 45 FF FF FF A0 00 1A 0D 0A"},
                           Delay{42949673, "A0 A1 00 06 45 00 00 00 04 00 41 0D 0A"},
                           Delay{42944673, "A0 A1 00 06 45 FF F8 5E E4 00 F8 0D 0A"},
                           Delay{42954672, "A0 A1 00 06 45 00 07 A0 C0 00 22 0D 0A"},
                           Delay{-42949673, "A0 A1 00 06 45 FF FF FF FC 00 46 0D 0A"},
                           Delay{1073741824, "A0 A1 00 06 45 00 00 00 00 00 45 0D 0A"},
                           Delay{kHighest, "A0 A1 00 06 45 FF FF FF 9C 00 26 0D 0A"},
                           Delay{kLowest, "A0 A1 00 06 45 00 00 00 00 00 45 0D 0A"}}) {
    EXPECT_EQ(
        observe([&](auto& driver) { return Outcome(driver.gpsObtCableDelayConfig(row.delay)); }),
        (Observed{.result = 1, .line = {"open", row.packet + (" " + kQueryDelay.packet)}}))
        << row.delay;
  }
}

TEST_F(TimingPulse, CableDelayIsComparedInWholeNanoseconds) {
  for (const auto& [reply, result] : {std::pair{"A0 A1 00 05 BB 00 00 0B 53 E3 0D 0A", 0U},
                                      {"A0 A1 00 05 BB 00 00 0B 54 E4 0D 0A", 1U},
                                      {"A0 A1 00 05 BB 00 00 0A EF 5E 0D 0A", 1U}}) {
    onPacket(kQueryDelay.packet).answer(bytes(reply));
    EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.setAntennaDelay(28)); }).result,
              result);
  }
}

}  // namespace
