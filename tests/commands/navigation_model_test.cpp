#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <filesystem>
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

// Interference detection. Its packets have no place for the attribute byte.

const Sent kSwitchOn{"A0 A1 00 04 64 06 01 00 63 0D 0A",
                     "64 06: Configure interference detection of GNSS receiver "};
const Sent kSwitchOff{"A0 A1 00 04 64 06 00 00 62 0D 0A",
                      "64 06: Configure interference detection of GNSS receiver "};
const Sent kQueryDetection{"A0 A1 00 02 64 07 63 0D 0A",
                           "64 07: Query interference detection status of GNSS receiver "};

// The navigation mode.

const Sent kSetMode0{"A0 A1 00 04 64 17 00 00 73 0D 0A",
                     "64 17: Configure the navigation mode of GNSS receiver "};
const Sent kSetMode3{"A0 A1 00 04 64 17 03 00 70 0D 0A",
                     "64 17: Configure the navigation mode of GNSS receiver "};
const Sent kSetMode5{"A0 A1 00 04 64 17 05 00 76 0D 0A",
                     "64 17: Configure the navigation mode of GNSS receiver "};
const Sent kQueryMode{"A0 A1 00 02 64 18 7C 0D 0A",
                      "64 18: Query the navigation mode of GNSS receiver "};

// The position fix.

constexpr const char* kFix2d2d = "A0 A1 00 05 64 11 01 01 00 75 0D 0A";
constexpr const char* kFix3d3d = "A0 A1 00 05 64 11 00 00 00 75 0D 0A";
constexpr const char* kFix3d2d = "A0 A1 00 05 64 11 00 01 00 74 0D 0A";
const Sent kQueryFix{"A0 A1 00 02 64 12 76 0D 0A",
                     "64 12: Query the position fix of GNSS receiver "};

std::vector<Query> queries() {
  return {
      {.name = "GetJamDetectConfig",
       .call =
           [](auto& driver) {
             bool control = true;
             unsigned char status = 77;
             const unsigned int result = driver.gpsOrbGetJamDetectConfig(control, status);
             return Outcome(result, control, status);
           },
       .sends = kQueryDetection,
       .reply = "A0 A1 00 04 64 83 01 02 E4 0D 0A",
       .answer = {0, "true, 2", "control: 1 nJamStatus 2\n"},
       .shortReply = "A0 A1 00 03 64 83 01 E6 0D 0A",
       .shortAnswer = {0, "true, 0", "control: 1 nJamStatus 0\n"},
       .untouched = "false, 0"},
      // Off, although the receiver says that it is on.
      {.name = "GetJammingDetection",
       .call =
           [](auto& driver) {
             bool enabled = true;
             const unsigned int result = driver.getJammingDetection(enabled);
             return Outcome(result, enabled);
           },
       .sends = kQueryDetection,
       .reply = "A0 A1 00 04 64 83 01 02 E4 0D 0A",
       .answer = {0, "false", "control: 1 nJamStatus 2\n"},
       .shortReply = "A0 A1 00 02 64 83 E7 0D 0A",
       .shortAnswer = {0, "false", "control: 0 nJamStatus 0\n"},
       .untouched = "false"},
      {.name = "GetChangeDynamicMode",
       .call =
           [](auto& driver) {
             obt_DynamicState_t mode = 0xABCD1234;
             const unsigned int result = driver.gpsObtGetChangeDynamicMode(mode);
             return Outcome(result, mode);
           },
       .sends = kQueryMode,
       .reply = "A0 A1 00 03 64 8B 07 E8 0D 0A",
       .answer = {0, "7"},
       .shortReply = "A0 A1 00 02 64 8B EF 0D 0A",
       .shortAnswer = {0, "0"},
       .untouched = "2882343476"},
  };
}

INSTANTIATE_TEST_SUITE_P(NavigationModel, QueryOutcome, testing::ValuesIn(queries()), RowName());

std::vector<Setting> settings() {
  return {
      {.name = "JamDetectConfigOn",
       .call = [](auto& driver) { return Outcome(driver.gpsObtJamDetectConfig(true)); },
       .sends = kSwitchOn,
       .reads = kQueryDetection,
       .reply = "A0 A1 00 04 64 83 01 02 E4 0D 0A",
       .printed = "control: 1 nJamStatus 2\n",
       .otherReply = "A0 A1 00 04 64 83 00 02 E5 0D 0A",
       .other = {1, "", "control: 0 nJamStatus 2\n"},
       .shortReply = "A0 A1 00 02 64 83 E7 0D 0A",
       .shortAnswer = {1, "", "control: 0 nJamStatus 0\n"}},
      // An unanswered read-back leaves "off".
      {.name = "JamDetectConfigOff",
       .call = [](auto& driver) { return Outcome(driver.gpsObtJamDetectConfig(false)); },
       .sends = kSwitchOff,
       .reads = kQueryDetection,
       .reply = "A0 A1 00 04 64 83 00 02 E5 0D 0A",
       .printed = "control: 0 nJamStatus 2\n",
       .otherReply = "A0 A1 00 04 64 83 01 02 E4 0D 0A",
       .other = {1, "", "control: 1 nJamStatus 2\n"},
       .shortReply = "A0 A1 00 02 64 83 E7 0D 0A",
       .shortAnswer = {0, "", "control: 0 nJamStatus 0\n"},
       .noReply = {4}},
      {.name = "SetJammingDetection",
       .call = [](auto& driver) { return Outcome(driver.setJammingDetection(true)); },
       .sends = kSwitchOn,
       .reads = kQueryDetection,
       .reply = "A0 A1 00 04 64 83 01 00 E6 0D 0A",
       .printed = "control: 1 nJamStatus 0\n",
       .otherReply = "A0 A1 00 04 64 83 00 00 E7 0D 0A",
       .other = {1, "", "control: 0 nJamStatus 0\n"},
       .shortReply = "A0 A1 00 03 64 83 01 E6 0D 0A",
       .shortAnswer = {0, "", "control: 1 nJamStatus 0\n"}},
      {.name = "ChangeDynamicMode",
       .call = [](auto& driver) { return Outcome(driver.gpsObtChangeDynamicMode(4)); },
       .sends = kSetMode3,
       .settle = 100ms,
       .reads = kQueryMode,
       .reply = "A0 A1 00 03 64 8B 03 EC 0D 0A",
       .otherReply = "A0 A1 00 03 64 8B 04 EB 0D 0A",  // the model, which is not what was sent
       .shortReply = "A0 A1 00 02 64 8B EF 0D 0A"},
      {.name = "ChangeDynamicModeToZero",
       .call = [](auto& driver) { return Outcome(driver.gpsObtChangeDynamicMode(8)); },
       .sends = kSetMode0,
       .settle = 100ms,
       .reads = kQueryMode,
       .reply = "A0 A1 00 03 64 8B 00 EF 0D 0A",
       .otherReply = "A0 A1 00 03 64 8B 08 E7 0D 0A",
       .shortReply = "A0 A1 00 02 64 8B EF 0D 0A",
       .shortAnswer = {0},
       .noReply = {4}},
      {.name = "SetDynamicModel",
       .call = [](auto& driver) { return Outcome(driver.setDynamicModel(6)); },
       .sends = kSetMode5,
       .settle = 100ms,
       .reads = kQueryMode,
       .reply = "A0 A1 00 03 64 8B 05 EA 0D 0A",
       .otherReply = "A0 A1 00 03 64 8B 06 E9 0D 0A",
       .shortReply = "A0 A1 00 02 64 8B EF 0D 0A"},
  };
}

INSTANTIATE_TEST_SUITE_P(NavigationModel, SettingOutcome, testing::ValuesIn(settings()), RowName());

class InterferenceDetection : public OperationTest {};

TEST_F(InterferenceDetection, IsTheLowestBitOfTheReplyAndTheStatusTheWholeNextByte) {
  struct Row {
    const char* reply;
    const char* outputs;
    const char* printed;
  };
  for (const Row& row :
       {Row{"A0 A1 00 04 64 83 00 00 E7 0D 0A", "false, 0", "control: 0 nJamStatus 0\n"},
        Row{"A0 A1 00 04 64 83 02 7F 9A 0D 0A", "false, 127", "control: 0 nJamStatus 127\n"},
        Row{"A0 A1 00 04 64 83 03 80 64 0D 0A", "true, 128", "control: 1 nJamStatus 128\n"},
        Row{"A0 A1 00 04 64 83 FE 01 18 0D 0A", "false, 1", "control: 0 nJamStatus 1\n"},
        Row{"A0 A1 00 04 64 83 FF FF E7 0D 0A", "true, 255", "control: 1 nJamStatus 255\n"}}) {
    onPacket(kQueryDetection.packet).answer(bytes(row.reply));
    const Observed observed = observe([](auto& driver) {
      bool control = false;
      unsigned char status = 77;
      const unsigned int result = driver.gpsOrbGetJamDetectConfig(control, status);
      return Outcome(result, control, status);
    });
    EXPECT_EQ(observed, (Observed{.outputs = row.outputs,
                                  .standardOutput = row.printed,
                                  .line = {"open", kQueryDetection.packet}}));
  }
}

TEST_F(InterferenceDetection, IsSwitchedInTheReceiver) {
  connectReceiver();
  for (const bool on : {true, false, true}) {
    EXPECT_EQ(observe([&](auto& driver) { return Outcome(driver.setJammingDetection(on)); }).result,
              0u);
    EXPECT_EQ(gps_.receiver.state().interferenceDetection, on ? 1 : 0);
  }
}

class NavigationMode : public OperationTest {};

TEST_F(NavigationMode, OfEachModelIsThatOfTheTable) {
  connectReceiver();
  struct Row {
    obt_DynamicState_t model;
    const char* packet;
  };
  for (const Row& row :
       {Row{0, "A0 A1 00 04 64 17 01 00 72 0D 0A"}, Row{1, "A0 A1 00 04 64 17 01 00 72 0D 0A"},
        Row{2, "A0 A1 00 04 64 17 01 00 72 0D 0A"}, Row{3, "A0 A1 00 04 64 17 02 00 71 0D 0A"},
        Row{4, "A0 A1 00 04 64 17 03 00 70 0D 0A"}, Row{5, "A0 A1 00 04 64 17 04 00 77 0D 0A"},
        Row{6, "A0 A1 00 04 64 17 05 00 76 0D 0A"}, Row{7, "A0 A1 00 04 64 17 05 00 76 0D 0A"},
        Row{8, "A0 A1 00 04 64 17 00 00 73 0D 0A"}}) {
    const Observed observed =
        observe([&](auto& driver) { return Outcome(driver.gpsObtChangeDynamicMode(row.model)); });
    EXPECT_EQ(observed,
              (Observed{.line = {"open", row.packet, "wait 100 ms", "open", kQueryMode.packet}}))
        << "model " << row.model;
  }
}

TEST_F(NavigationMode, OfAnyOtherModelIsZero) {
  connectReceiver();
  for (const obt_DynamicState_t model : {9U, 255U, 256U, 260U, 0x80000000U, 0xFFFFFFFFU}) {
    const Observed observed =
        observe([&](auto& driver) { return Outcome(driver.gpsObtChangeDynamicMode(model)); });
    EXPECT_EQ(
        observed,
        (Observed{.line = {"open", kSetMode0.packet, "wait 100 ms", "open", kQueryMode.packet}}))
        << "model " << model;
  }
  EXPECT_EQ(
      observe([](auto& driver) { return Outcome(driver.setDynamicModel(255)); }),
      (Observed{.line = {"open", kSetMode0.packet, "wait 100 ms", "open", kQueryMode.packet}}));
}

/// Waits until bytes lie ready at the tty; false when none come.
bool hasInput(const std::filesystem::path& tty) {
  constexpr int kLimitMilliseconds = 5000;
  pollfd descriptor{::open(tty.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK), POLLIN, 0};
  const bool ready = ::poll(&descriptor, 1, kLimitMilliseconds) == 1;
  ::close(descriptor.fd);
  return ready;
}

TEST_F(NavigationMode, IsNotReadFromWhatCameBeforeTheReadBack) {
  onPacket(kSetMode3.packet).answer(bytes("A0 A1 00 03 64 8B 07 E8 0D 0A"));
  onPacket(kQueryMode.packet).answer(bytes("A0 A1 00 03 64 8B 03 EC 0D 0A")).after(20ms);
  when("wait 100 ms", 1, [&] { EXPECT_TRUE(hasInput(files_.tty)); });
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.gpsObtChangeDynamicMode(4)); }).result,
            0u);
}

TEST_F(NavigationMode, AddsUpAFailedSettingAndAMissingReadBack) {
  unplug();
  when("wait 100 ms", 1, [&] {
    plugIn();
    letWaitsEnd();
  });
  EXPECT_EQ(observe([](auto& driver) { return Outcome(driver.gpsObtChangeDynamicMode(4)); }),
            (Observed{.result = 8 | 4 | 1,
                      .standardError = std::string(kNoDevice) + kTimedOut,
                      .errorLog = "STAMP:  Could not send : " + kSetMode3.description +
                                  "\nSTAMP:  Did not receive : " + kQueryMode.description + "\n",
                      .line = {"wait 100 ms", "open", kQueryMode.packet}}));
  EXPECT_EQ(waitsEnded(), 1);
}

TEST_F(NavigationMode, IsReportedAsTheReceiverSaysIt) {
  for (const auto& [reply, mode] : {std::pair{"A0 A1 00 03 64 8B 00 EF 0D 0A", "0"},
                                    {"A0 A1 00 03 64 8B 08 E7 0D 0A", "8"},
                                    {"A0 A1 00 03 64 8B 80 6F 0D 0A", "128"},
                                    {"A0 A1 00 03 64 8B FF 10 0D 0A", "255"}}) {
    onPacket(kQueryMode.packet).answer(bytes(reply));
    const Observed observed = observe([](auto& driver) {
      obt_DynamicState_t read = 0xABCD1234;
      const unsigned int result = driver.gpsObtGetChangeDynamicMode(read);
      return Outcome(result, read);
    });
    EXPECT_EQ(observed, (Observed{.outputs = mode, .line = {"open", kQueryMode.packet}}));
  }
}

/// Navigation mode and position fix together.
class DynamicModel : public OperationTest {
 protected:
  Observed set(int model, int fixMode) {
    return observe([&](auto& driver) {
      return Outcome(driver.setDynamicModel(static_cast<unsigned char>(model),
                                            static_cast<unsigned char>(fixMode)));
    });
  }

  Observed get() {
    return observe([](auto& driver) {
      unsigned char model = 77;
      unsigned char fixMode = 78;
      const unsigned int result = driver.getDynamicModel(model, fixMode);
      return Outcome(result, model, fixMode);
    });
  }

  void answerMode(const std::string& reply) { onPacket(kQueryMode.packet).answer(bytes(reply)); }
  void answerFix(const std::string& reply) { onPacket(kQueryFix.packet).answer(bytes(reply)); }
};

TEST_F(DynamicModel, SetsTheNavigationModeAndAfterAWaitTheFix) {
  connectReceiver();
  for (const auto& [fixMode, packet] : {std::pair{0, kFix2d2d}, {1, kFix3d3d}, {2, kFix3d2d}}) {
    EXPECT_EQ(set(4, fixMode),
              (Observed{.line = {"open", kSetMode3.packet, "wait 100 ms", "open", kQueryMode.packet,
                                 "wait 100 ms", "open", packet + (" " + kQueryFix.packet)}}))
        << "fix mode " << fixMode;
  }
}

TEST_F(DynamicModel, IsNotSupportedWithAnotherFixModeOnceTheNavigationModeIsSent) {
  connectReceiver();
  for (const int fixMode : {3, 4, 128, 255}) {
    EXPECT_EQ(
        set(4, fixMode),
        (Observed{.result = 256,
                  .line = {"open", kSetMode3.packet, "wait 100 ms", "open", kQueryMode.packet}}))
        << "fix mode " << fixMode;
  }
  EXPECT_EQ(gps_.receiver.state().navigationMode, 3);
}

TEST_F(DynamicModel, IsSimplyNotSupportedWithAnotherFixModeWhateverBecameOfTheNavigationMode) {
  answerMode("A0 A1 00 03 64 8B 07 E8 0D 0A");
  EXPECT_EQ(set(4, 3).result, 256u);
  unplug();
  EXPECT_EQ(set(4, 3),
            (Observed{.result = 256,
                      .standardError = std::string(kNoDevice) + kNoDevice,
                      .errorLog = "STAMP:  Could not send : " + kSetMode3.description +
                                  "\nSTAMP:  Could not send : " + kQueryMode.description + "\n",
                      .line = {"wait 100 ms"}}));
}

TEST_F(DynamicModel, GoesOnToTheFixWhenTheNavigationModeIsNotKept) {
  answerMode("A0 A1 00 03 64 8B 07 E8 0D 0A");
  answerFix("A0 A1 00 04 64 88 00 00 EC 0D 0A");
  EXPECT_EQ(set(4, 1),
            (Observed{.result = 1,
                      .line = {"open", kSetMode3.packet, "wait 100 ms", "open", kQueryMode.packet,
                               "wait 100 ms", "open", kFix3d3d + (" " + kQueryFix.packet)}}));
}

TEST_F(DynamicModel, ReportsAFixThatIsNotKept) {
  answerMode("A0 A1 00 03 64 8B 03 EC 0D 0A");
  answerFix("A0 A1 00 04 64 88 01 00 ED 0D 0A");
  EXPECT_EQ(set(4, 1).result, 1u);
}

TEST_F(DynamicModel, AddsUpWhatBothHalvesComeTo) {
  answerFix("A0 A1 00 04 64 88 01 00 ED 0D 0A");
  letWaitsEnd();
  EXPECT_EQ(set(8, 1),  // mode 0 is also what an unanswered read-back leaves
            (Observed{.result = 4 | 1,
                      .standardError = kTimedOut,
                      .errorLog = "STAMP:  Did not receive : " + kQueryMode.description + "\n",
                      .line = {"open", kSetMode0.packet, "wait 100 ms", "open", kQueryMode.packet,
                               "wait 100 ms", "open", kFix3d3d + (" " + kQueryFix.packet)}}));
}

TEST_F(DynamicModel, IsTriedInBothHalvesWithoutDevice) {
  unplug();
  EXPECT_EQ(set(4, 1),
            (Observed{.result = 8 | 1,
                      .standardError = std::string(kNoDevice) + kNoDevice + kNoDevice + kNoDevice,
                      .errorLog = "STAMP:  Could not send : " + kSetMode3.description +
                                  "\nSTAMP:  Could not send : " + kQueryMode.description +
                                  "\nSTAMP:  Could not send : "
                                  "64 11: Configure the position fix mask of GNSS receiver "
                                  "\nSTAMP:  Could not send : " +
                                  kQueryFix.description + "\n",
                      .line = {"wait 100 ms", "wait 100 ms"}}));
}

TEST_F(DynamicModel, IsReadFromTheFixFirstAndThenFromTheNavigationMode) {
  answerFix("A0 A1 00 04 64 88 00 01 ED 0D 0A");
  answerMode("A0 A1 00 03 64 8B FF 10 0D 0A");
  EXPECT_EQ(get(), (Observed{.outputs = "255, 2",
                             .line = {"open", kQueryFix.packet, "open", kQueryMode.packet}}));
}

TEST_F(DynamicModel, HasTheFixModeThatBothHalvesOfTheFixAgreeOn) {
  answerMode("A0 A1 00 03 64 8B 03 EC 0D 0A");
  for (const auto& [reply, outputs] : {std::pair{"A0 A1 00 04 64 88 01 01 EC 0D 0A", "3, 1"},
                                       {"A0 A1 00 04 64 88 00 00 EC 0D 0A", "3, 0"},
                                       {"A0 A1 00 04 64 88 00 01 ED 0D 0A", "3, 2"},
                                       {"A0 A1 00 04 64 88 01 00 ED 0D 0A", "3, 2"},
                                       {"A0 A1 00 04 64 88 02 02 EC 0D 0A", "3, 2"},
                                       {"A0 A1 00 04 64 88 01 02 EF 0D 0A", "3, 2"},
                                       {"A0 A1 00 04 64 88 02 00 EE 0D 0A", "3, 2"},
                                       {"A0 A1 00 04 64 88 FF FF EC 0D 0A", "3, 2"}}) {
    answerFix(reply);
    EXPECT_EQ(get().outputs, outputs) << reply;
  }
}

TEST_F(DynamicModel, IsLeftAloneWhenTheFixIsNotTold) {
  answerMode("A0 A1 00 03 64 8B 03 EC 0D 0A");
  letWaitsEnd();
  EXPECT_EQ(get(),
            (Observed{.result = 4,
                      .outputs = "77, 78",
                      .standardError = kTimedOut,
                      .errorLog = "STAMP:  Did not receive : " + kQueryFix.description + "\n",
                      .line = {"open", kQueryFix.packet}}));
}

TEST_F(DynamicModel, IsLeftAloneWhenTheNavigationModeIsNotTold) {
  answerFix("A0 A1 00 04 64 88 00 00 EC 0D 0A");
  letWaitsEnd();
  EXPECT_EQ(get(),
            (Observed{.result = 4,
                      .outputs = "77, 78",
                      .standardError = kTimedOut,
                      .errorLog = "STAMP:  Did not receive : " + kQueryMode.description + "\n",
                      .line = {"open", kQueryFix.packet, "open", kQueryMode.packet}}));
}

TEST_F(DynamicModel, IsLeftAloneWhenTheDeviceGoesAfterTheFix) {
  answerFix("A0 A1 00 04 64 88 00 00 EC 0D 0A");
  when("open", 1, [&] { unplug(); });
  EXPECT_EQ(get(),
            (Observed{.result = 8,
                      .outputs = "77, 78",
                      .standardError = kNoDevice,
                      .errorLog = "STAMP:  Could not send : " + kQueryMode.description + "\n",
                      .line = {"open", kQueryFix.packet}}));
}

TEST_F(DynamicModel, IsLeftAloneWithoutDevice) {
  unplug();
  EXPECT_EQ(get(),
            (Observed{.result = 8,
                      .outputs = "77, 78",
                      .standardError = kNoDevice,
                      .errorLog = "STAMP:  Could not send : " + kQueryFix.description + "\n"}));
}

// What is set and what is then read differ, on purpose.

TEST_F(DynamicModel, ComesBackWithFixModesZeroAndOneExchanged) {
  connectReceiver();
  for (const auto& [fixMode, outputs] : {std::pair{0, "2, 1"}, {1, "2, 0"}, {2, "2, 2"}}) {
    EXPECT_EQ(set(3, fixMode).result, 0u);
    EXPECT_EQ(get().outputs, outputs);
  }
}

TEST_F(DynamicModel, ComesBackAsTheNavigationModeOfTheModel) {
  connectReceiver();
  for (const auto& [model, outputs] :
       {std::pair{0, "1, 2"}, {1, "1, 2"}, {2, "1, 2"}, {7, "5, 2"}, {8, "0, 2"}}) {
    EXPECT_EQ(set(model, 2).result, 0u);
    EXPECT_EQ(get().outputs, outputs);
  }
}

}  // namespace
