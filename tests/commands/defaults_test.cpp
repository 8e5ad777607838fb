#include <functional>
#include <string>
#include <vector>

#include "commands/operation_fixture.h"

namespace orb::test {
namespace {

using Steps = std::vector<std::string>;

/// Records each step of a sequence instead of taking it.
class StepsTakenDown : public RecordingDriver {
 public:
  unsigned int gpsObtSetFactoryDefaults() override { return note("gpsObtSetFactoryDefaults"); }
};

struct Sequence {
  const char* name;
  std::function<unsigned int(Driver&)> run;  ///< not through the virtual table
  Steps steps;
};

std::ostream& operator<<(std::ostream& out, const Sequence& sequence) {
  return out << sequence.name;
}

class SequenceOfDefaults : public OperationTest, public testing::WithParamInterface<Sequence> {
 protected:
  unsigned int run(StepsTakenDown& driver) { return GetParam().run(driver); }
};

INSTANTIATE_TEST_SUITE_P(
    Each, SequenceOfDefaults,
    testing::Values(Sequence{"Application",
                             [](auto& driver) { return driver.Driver::setApplicationDefaults(); },
                             {"configureSBAS()", "setDynamicModel(8, 2)", "setUtcStandardAuto()",
                              "gpsObtSetMsgType(\"NMEA\")"}},
                    Sequence{"Configuration",
                             [](auto& driver) { return driver.Driver::setDefaultConfiguration(); },
                             {"setAntennaDelay(28)", "setGnssSystem(77)", "setMinCNo(0)",
                              "setElevationLimit(10)", "setDynamicModel(1, 1)", "setSurveyAuto()",
                              "configureSBAS()"}},
                    Sequence{"Factory",
                             [](auto& driver) { return driver.Driver::resetFactoryDefaults(); },
                             {"gpsObtSetFactoryDefaults()", "configureOrbPolling(1)",
                              "configureNmeaPolling(0)", "setDefaultConfiguration()",
                              "gpsObtSetMsgType(\"NMEA\")", "save()"}}),
    [](const auto& info) { return info.param.name; });

TEST_P(SequenceOfDefaults, CallsItsStepsInOrderThroughVirtualMembersAndSendsNothingItself) {
  StepsTakenDown driver;
  EXPECT_EQ(observe(driver, [&](auto& /*same*/) { return Outcome(run(driver)); }), Observed{});
  EXPECT_EQ(driver.calls, GetParam().steps);
}

// Each step comes to two bits of its own.
TEST_P(SequenceOfDefaults, AddsUpWhatAllItsStepsCameTo) {
  StepsTakenDown driver;
  driver.resultOf = [](std::size_t n) { return 0x101U << (n - 1); };
  EXPECT_EQ(run(driver), 0x101U * ((1U << GetParam().steps.size()) - 1));
  EXPECT_EQ(driver.calls, GetParam().steps);
}

// With a receiver, a silent one, and none at all. Names of rows stand for what these exchange with
// the receiver; the texts between them are taken as they stand.

const Steps kApplication = {"SbasConfigureOff", "ChangeDynamicModeToZero", "wait 100 ms",
                            "FixNavConfigureTo3D2D", "SetMsgTypeToNmea"};

/// The configuration, with these steps where the masks and the survey are set.
Steps configuration(const Steps& minCNo, const Steps& elevationLimit, const Steps& survey) {
  Steps steps = {"SetAntennaDelay", "GnssConfigure", "SbasConfigureOff", "QzssConfigureOff"};
  const auto append = [&](const Steps& more) {
    steps.insert(steps.end(), more.begin(), more.end());
  };
  append(minCNo);
  append(elevationLimit);
  append({"ChangeDynamicMode", "wait 100 ms", "FixNavConfigureTo3D3D"});
  append(survey);
  append({"SbasConfigureOff"});
  return steps;
}

// Three steps ask before they set, and get no further without an answer.
const Steps kSilentConfiguration =
    configuration({"GetElevConfigure"}, {"GetElevConfigure"}, {"GetTimeMode"});

// The position that the receiver has after its reset is sent again: 2000 s and a deviation of 30,
// nowhere.
const Steps kConfiguration = configuration(
    {"GetElevConfigure", "open",
     "A0 A1 00 05 2B 01 05 00 00 2F 0D 0A A0 A1 00 01 2F 2F 0D 0A",  // C/N0
     "wait 800 ms", "GetElevConfigure"},
    {"GetElevConfigure", "wait 100 ms", "open",
     "A0 A1 00 05 2B 01 0A 00 00 20 0D 0A A0 A1 00 01 2F 2F 0D 0A"},  // elevation
    {"GetTimeMode", "open",
     "A0 A1 00 1F 54 01 00 00 2A 30 00 00 00 1E 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
     "00 00 00 00 00 51 0D 0A",
     "wait 100 ms", "GetTimeMode"});

Steps factory(Steps configuration) {
  const Steps before = {"SetFactoryDefaults", "GetNavMsg", "NmeaExtendedConfigureToZero"};
  configuration.insert(configuration.begin(), before.begin(), before.end());
  configuration.push_back("SetMsgTypeToNmea");
  return configuration;
}

/// What the row of this name sends and, after that, what the line sees of it.
struct Exchange {
  std::vector<Sent> messages;
  Steps line;
};

Exchange exchangeOf(const std::string& name) {
  for (const Setting& row : everyOperation().settings) {
    if (row.name == name) {
      return {{row.sends, row.reads}, lineOf(row, row.sends.packet)};
    }
  }
  for (const Query& row : everyOperation().queries) {
    if (row.name == name) {
      return {{row.sends}, {"open", row.sends.packet}};
    }
  }
  for (const Order& row : everyOperation().orders) {
    if (row.name == name) {
      return {{row.sends}, {"open", row.sends.packet}};
    }
  }
  return {{}, {name}};
}

class Defaults : public OperationTest {
 protected:
  Observed setApplicationDefaults() { return observe(calling(&Driver::setApplicationDefaults)); }
  Observed setDefaultConfiguration() { return observe(calling(&Driver::setDefaultConfiguration)); }
  Observed resetFactoryDefaults() { return observe(calling(&Driver::resetFactoryDefaults)); }

  static Observed succeeding(const Steps& steps) {
    Observed observed;
    for (const std::string& step : steps) {
      const Steps line = exchangeOf(step).line;
      observed.line.insert(observed.line.end(), line.begin(), line.end());
    }
    return observed;
  }

  /// No exchange but an order succeeds.
  static Observed silent(const Steps& steps) {
    Observed observed = succeeding(steps);
    observed.result = 4 | 1;
    for (const std::string& step : steps) {
      const Exchange exchange = exchangeOf(step);
      if (!exchange.messages.empty() && step != "SetFactoryDefaults") {
        observed.standardError += kTimedOut;
        observed.errorLog += noReply(exchange.messages.back().description);
      }
    }
    return observed;
  }

  static Observed unplugged(const Steps& steps) {
    Observed observed{.result = 8 | 1};
    for (const std::string& step : succeeding(steps).line) {
      if (step.starts_with("wait")) {
        observed.line.push_back(step);
      }
    }
    for (const std::string& step : steps) {
      for (const Sent& message : exchangeOf(step).messages) {
        observed.standardError += kNoDevice;
        observed.errorLog += notSent(message.description);
      }
    }
    return observed;
  }
};

TEST_F(Defaults, OfTheApplicationAreSentInOrder) {
  connectReceiver();
  EXPECT_EQ(setApplicationDefaults(), succeeding(kApplication));
}

TEST_F(Defaults, OfTheConfigurationAreSentInOrder) {
  connectReceiver();
  EXPECT_EQ(setDefaultConfiguration(), succeeding(kConfiguration));
}

TEST_F(Defaults, OfTheFactoryAreSentInOrder) {
  connectReceiver();
  gps_.receiver.change([](auto& state) {
    state.updateRate = 20;
    state.timing.standardDeviation = 77;
    state.timing.latitude = 48.5;
    state.elevationCnrMask.elevation = 33;
  });
  EXPECT_EQ(resetFactoryDefaults(), succeeding(factory(kConfiguration)));
}

TEST_F(Defaults, AreAllTriedWithASilentReceiver) {
  letWaitsEnd();
  EXPECT_EQ(setApplicationDefaults(), silent(kApplication));
  EXPECT_EQ(waitsEnded(), 4);
  letWaitsEnd();
  EXPECT_EQ(setDefaultConfiguration(), silent(kSilentConfiguration));
  EXPECT_EQ(waitsEnded(), 10);
  letWaitsEnd();
  EXPECT_EQ(resetFactoryDefaults(), silent(factory(kSilentConfiguration)));
  EXPECT_EQ(waitsEnded(), 13);
}

TEST_F(Defaults, AreAllTriedWithoutDevice) {
  unplug();
  EXPECT_EQ(setApplicationDefaults(), unplugged(kApplication));
  EXPECT_EQ(setDefaultConfiguration(), unplugged(kSilentConfiguration));
  EXPECT_EQ(resetFactoryDefaults(), unplugged(factory(kSilentConfiguration)));
}

}  // namespace
}  // namespace orb::test
