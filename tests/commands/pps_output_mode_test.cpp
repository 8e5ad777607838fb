#include <gtest/gtest.h>

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
using namespace std::chrono_literals;

constexpr const char* kConfigure = "55 00: Configure 1PPS Output Mode of GNSS receiver ";

const Sent kQueryMode{"A0 A1 00 01 56 56 0D 0A", "56 00: Query 1PPS Output Mode of GNSS receiver "};
const Sent kSetUtc{"A0 A1 00 04 55 02 01 00 56 0D 0A", kConfigure};

std::string prints(int mode, int alignSource) {
  return "1PPS output mode: " + std::to_string(mode) +
         " \n1PPS Align source: " + std::to_string(alignSource) + " \n";
}

Outcome getMode(orbController_QN4470T01& driver) {
  unsigned int mode = 0xABCD1234;
  unsigned int alignSource = 77;
  const unsigned int result = driver.gpsOrbGet1ppsOutputMode(mode, alignSource);
  return Outcome(result, mode, alignSource);
}

Outcome getTimeReference(orbController_QN4470T01& driver) {
  std::string reference = "before";
  const unsigned int result = driver.getTimeReference(reference);
  return Outcome(result, reference);
}

std::vector<Query> queries() {
  return {
      {.name = "Get1ppsOutputMode",
       .call = getMode,
       .sends = kQueryMode,
       .reply = "A0 A1 00 03 C3 02 01 C0 0D 0A",
       .answer = {0, "2, 1", prints(2, 1)},
       .shortReply = "A0 A1 00 02 C3 02 C1 0D 0A",
       .shortAnswer = {0, "2, 0", prints(2, 0)},
       .untouched = "2882343476, 77"},
      // A failed query leaves the align source of GNSS time.
      {.name = "GetTimeReference",
       .call = getTimeReference,
       .sends = kQueryMode,
       .reply = "A0 A1 00 03 C3 02 01 C0 0D 0A",
       .answer = {0, "\"UTC\"", prints(2, 1)},
       .shortReply = "A0 A1 00 01 C3 C3 0D 0A",
       .shortAnswer = {0, "\"GNSS\"", prints(0, 0)},
       .untouched = "\"GNSS\""},
  };
}

INSTANTIATE_TEST_SUITE_P(PpsOutputMode, QueryOutcome, testing::ValuesIn(queries()), RowName());

// After a read-back that failed, nothing is compared.
std::vector<Setting> settings() {
  return {
      {.name = "OutputMode",
       .call = [](auto& driver) { return Outcome(driver.gpsOrb1ppsOutputMode(3, 200)); },
       .sends = {"A0 A1 00 04 55 03 C8 00 9E 0D 0A", kConfigure},
       .settle = 100ms,
       .reads = kQueryMode,
       .reply = "A0 A1 00 03 C3 03 C8 08 0D 0A",
       .printed = prints(3, 200),
       .otherReply = "A0 A1 00 03 C3 03 C9 09 0D 0A",
       .other = {1, "", prints(3, 201)},
       .shortReply = "A0 A1 00 02 C3 03 C0 0D 0A",
       .shortAnswer = {1, "", prints(3, 0)},
       .noReply = {4}},
      {.name = "SetTimeReference",
       .call = [](auto& driver) { return Outcome(driver.setTimeReference("UTC")); },
       .sends = kSetUtc,
       .settle = 100ms,
       .reads = kQueryMode,
       .reply = "A0 A1 00 03 C3 02 01 C0 0D 0A",
       .printed = prints(2, 1),
       .otherReply = "A0 A1 00 03 C3 00 01 C2 0D 0A",
       .other = {1, "", prints(0, 1)},
       .shortReply = "A0 A1 00 02 C3 02 C1 0D 0A",
       .shortAnswer = {1, "", prints(2, 0)},
       .noReply = {4}},
      {.name = "ConfigTimePulse",
       .call = [](auto& driver) { return Outcome(driver.configTimePulse(1000, 255, true)); },
       .sends = {"A0 A1 00 04 55 FF 00 00 AA 0D 0A", kConfigure},
       .settle = 100ms,
       .reads = kQueryMode,
       .reply = "A0 A1 00 03 C3 FF 00 3C 0D 0A",
       .printed = prints(255, 0),
       .otherReply = "A0 A1 00 03 C3 FF 01 3D 0D 0A",
       .other = {1, "", prints(255, 1)},
       .shortReply = "A0 A1 00 01 C3 C3 0D 0A",
       .shortAnswer = {1, "", prints(0, 0)},
       .noReply = {4}},
  };
}

INSTANTIATE_TEST_SUITE_P(PpsOutputMode, SettingOutcome, testing::ValuesIn(settings()), RowName());

class PpsOutputMode : public OperationTest {
 protected:
  void answer(const std::string& reply) { onPacket(kQueryMode.packet).answer(bytes(reply)); }
};

TEST_F(PpsOutputMode, IsReadByteByByte) {
  struct Row {
    const char* reply;
    const char* outputs;
    std::string printed;
  };
  for (const Row& row : {Row{"A0 A1 00 03 C3 00 00 C3 0D 0A", "0, 0", prints(0, 0)},
                         Row{"A0 A1 00 03 C3 7F 80 3C 0D 0A", "127, 128", prints(127, 128)},
                         Row{"A0 A1 00 03 C3 80 7F 3C 0D 0A", "128, 127", prints(128, 127)},
                         Row{"A0 A1 00 03 C3 FF FF C3 0D 0A", "255, 255", prints(255, 255)}}) {
    answer(row.reply);
    EXPECT_EQ(observe(getMode), (Observed{.outputs = row.outputs,
                                          .standardOutput = row.printed,
                                          .line = {"open", kQueryMode.packet}}));
  }
}

// The low bytes are sent, and the whole values compared with what is read back.
TEST_F(PpsOutputMode, OrAlignSourceAbove255IsSentAndThenRejected) {
  connectReceiver();
  struct Row {
    unsigned int mode;
    unsigned int alignSource;
    const char* packet;
    std::string printed;
  };
  for (const Row& row : {Row{258, 0, "A0 A1 00 04 55 02 00 00 57 0D 0A", prints(2, 0)},
                         Row{2, 257, "A0 A1 00 04 55 02 01 00 56 0D 0A", prints(2, 1)},
                         Row{256, 256, "A0 A1 00 04 55 00 00 00 55 0D 0A", prints(0, 0)},
                         Row{0xFFFFFFFF, 0, "A0 A1 00 04 55 FF 00 00 AA 0D 0A", prints(255, 0)}}) {
    EXPECT_EQ(observe([&](auto& driver) {
                return Outcome(driver.gpsOrb1ppsOutputMode(row.mode, row.alignSource));
              }),
              (Observed{.result = 1,
                        .standardOutput = row.printed,
                        .line = {"open", row.packet, "wait 100 ms", "open", kQueryMode.packet}}));
  }
  EXPECT_EQ(gps_.receiver.state().ppsOutput.mode, 255);
}

TEST_F(PpsOutputMode, IsRejectedWhenTheModeReadBackDiffers) {
  answer("A0 A1 00 03 C3 01 01 C3 0D 0A");
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.gpsOrb1ppsOutputMode(2, 1)); }).result,
            1u);
}

TEST_F(PpsOutputMode, IsRejectedWhenTheAlignSourceReadBackDiffers) {
  answer("A0 A1 00 03 C3 02 00 C1 0D 0A");
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.gpsOrb1ppsOutputMode(2, 1)); }).result,
            1u);
}

TEST_F(PpsOutputMode, IsNotComparedOnceTheSettingCouldNotBeSent) {
  unplug();
  answer("A0 A1 00 03 C3 05 05 C3 0D 0A");
  when("wait 100 ms", 1, [&] { plugIn(); });
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.gpsOrb1ppsOutputMode(2, 1)); }),
            (Observed{.result = 8,
                      .standardOutput = prints(5, 5),
                      .standardError = kNoDevice,
                      .errorLog = std::string("STAMP:  Could not send : ") + kConfigure + "\n",
                      .line = {"wait 100 ms", "open", kQueryMode.packet}}));
}

TEST_F(PpsOutputMode, AddsUpAFailedSettingAndAMissingReadBack) {
  unplug();
  when("wait 100 ms", 1, [&] {
    plugIn();
    letWaitsEnd();
  });
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.gpsOrb1ppsOutputMode(2, 1)); }),
            (Observed{.result = 8 | 4,
                      .standardError = std::string(kNoDevice) + kTimedOut,
                      .errorLog = std::string("STAMP:  Could not send : ") + kConfigure +
                                  "\nSTAMP:  Did not receive : " + kQueryMode.description + "\n",
                      .line = {"wait 100 ms", "open", kQueryMode.packet}}));
}

// The time reference.

TEST_F(PpsOutputMode, TellsTheTimeReferenceByTheAlignSourceAlone) {
  for (const auto& [reply, reference] : {std::pair{"A0 A1 00 03 C3 00 00 C3 0D 0A", "\"GNSS\""},
                                         {"A0 A1 00 03 C3 FF 00 3C 0D 0A", "\"GNSS\""},
                                         {"A0 A1 00 03 C3 00 01 C2 0D 0A", "\"UTC\""},
                                         {"A0 A1 00 03 C3 FF 01 3D 0D 0A", "\"UTC\""}}) {
    answer(reply);
    EXPECT_EQ(observe(getTimeReference).outputs, reference) << reply;
  }
}

TEST_F(PpsOutputMode, LeavesTheTimeReferenceAloneForAnyOtherAlignSource) {
  for (const char* reply : {"A0 A1 00 03 C3 02 02 C3 0D 0A", "A0 A1 00 03 C3 00 80 43 0D 0A",
                            "A0 A1 00 03 C3 01 FF 3D 0D 0A"}) {
    answer(reply);
    const Observed observed = observe(getTimeReference);
    EXPECT_EQ(observed.result, 0u);
    EXPECT_EQ(observed.outputs, "\"before\"") << reply;
  }
}

TEST_F(PpsOutputMode, TakesUtcAndGpsForTheSameTimeReference) {
  connectReceiver();
  for (const char* reference : {"UTC", "GPS"}) {
    EXPECT_EQ(
        observe([&](auto& driver) { return Outcome(driver.setTimeReference(reference)); }),
        (Observed{.standardOutput = prints(2, 1),
                  .line = {"open", kSetUtc.packet, "wait 100 ms", "open", kQueryMode.packet}}));
  }
}

// "GNSS" is what the reference is read as.
TEST_F(PpsOutputMode, RejectsAnyOtherTimeReferenceWithTheDeviceLeftClosed) {
  connectReceiver();
  for (const std::string reference :
       {"GNSS", "utc", "gps", "Utc", "", " UTC", "UTC ", "UTC1", "GP", "GLONASS"}) {
    EXPECT_EQ(observe([&](auto& driver) { return Outcome(driver.setTimeReference(reference)); }),
              (Observed{.result = 1}))
        << reference;
  }
  EXPECT_EQ(observe([](auto& driver) {
              return Outcome(driver.setTimeReference(std::string("UTC\0", 4)));
            }),
            (Observed{.result = 1}));
}

TEST_F(PpsOutputMode, IsTheTimePulsesModeWhateverItsPeriodAndSwitch) {
  connectReceiver();
  for (const int period : {0, 1, 65535}) {
    for (const bool enable : {false, true}) {
      EXPECT_EQ(
          observe([&](auto& driver) {
            return Outcome(driver.configTimePulse(static_cast<unsigned short>(period), 3, enable));
          }),
          (Observed{.standardOutput = prints(3, 0),
                    .line = {"open", "A0 A1 00 04 55 03 00 00 56 0D 0A", "wait 100 ms", "open",
                             kQueryMode.packet}}));
    }
  }
}

// The front ends go through the virtual members.

class ModeTakenDown : public orb::test::StampedDriver {
 public:
  unsigned int gpsOrb1ppsOutputMode(unsigned int mode, unsigned int alignSource) override {
    calls.emplace_back(mode, alignSource);
    return 77;
  }
  unsigned int gpsOrbGet1ppsOutputMode(unsigned int& mode, unsigned int& alignSource) override {
    calls.emplace_back(mode, alignSource);
    alignSource = 1;
    return 78;
  }
  std::vector<std::pair<unsigned int, unsigned int>> calls;
};

TEST_F(PpsOutputMode, IsWhatTheFrontEndsCall) {
  ModeTakenDown driver;
  EXPECT_EQ(driver.setTimeReference("UTC"), 77u);
  EXPECT_EQ(driver.setTimeReference("GPS"), 77u);
  EXPECT_EQ(driver.configTimePulse(9, 200, true), 77u);
  std::string reference;
  EXPECT_EQ(driver.getTimeReference(reference), 78u);
  EXPECT_EQ(reference, "UTC");
  EXPECT_EQ(driver.calls,
            (std::vector<std::pair<unsigned int, unsigned int>>{{2, 1}, {2, 1}, {200, 0}, {0, 0}}));
}

}  // namespace
