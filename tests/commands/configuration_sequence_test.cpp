#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <type_traits>

#include "support/operation_test.h"

namespace {

using orb::test::Call;
using orb::test::Observed;
using orb::test::OperationTest;
using orb::test::Outcome;

/// A caller who sets and reads the receiver in any order, and keeps a note of everything.
class ConfigurationSequence : public OperationTest, public testing::WithParamInterface<unsigned> {
 protected:
  ConfigurationSequence() {
    connectReceiver();
    noteFactoryDefaults();
  }

  void noteFactoryDefaults() {
    notes_ = {{"interference", "false"}, {"navigation mode", "0"}, {"fix", "\"3D\", \"3D\""},
              {"pulse width", "1000"},   {"frequency", "0"},       {"delay", "0"},
              {"constellations", "3"},   {"SBAS", "true"},         {"QZSS", "true"},
              {"second band", "false"},  {"NMEA interval", "1"},   {"survey mode", "0"},
              {"survey length", "2000"}, {"position", "0, 0, 0"},  {"PPS mode", "0, 0"}};
  }

  template <typename Number>
  Number anyOf(Number lowest, Number highest) {
    return std::uniform_int_distribution<Number>(lowest, highest)(random_);
  }
  double anyAngle(double limit) {
    return std::uniform_real_distribution<double>(-limit, limit)(random_);
  }
  bool either() { return anyOf(0, 1) == 1; }
  unsigned char anyByte() { return static_cast<unsigned char>(anyOf(0, 255)); }

  /// A setting that is to come to `result`.
  void set(const Call& call, unsigned int result = 0) {
    const Observed observed = observe(call);
    EXPECT_EQ(observed.result, result);
    EXPECT_EQ(observed.errorLog, "");
  }

  void expect(const std::string& outputs, const Call& call) {
    const Observed observed = observe(call);
    EXPECT_EQ(observed.result, 0u);
    EXPECT_EQ(observed.outputs, outputs);
  }

  /// A number that is taken from `lowest` to `highest`, and refused beyond.
  template <typename Number, typename Setter>
  void setWithin(const std::string& note, Number lowest, Number highest, Setter setter) {
    const Number margin = (highest - lowest) / 4;
    const Number below = std::is_signed_v<Number> ? lowest - margin : 0;
    const Number value = anyOf<Number>(below, highest + margin);
    const bool taken = value >= lowest && value <= highest;
    set([&](auto& driver) { return Outcome(setter(driver, value)); }, taken ? 0 : 1);
    if (taken) {
      notes_[note] = std::to_string(value);
    }
  }

  template <typename Setter>
  void setSwitch(const std::string& note, Setter setter) {
    const bool on = either();
    set([&](auto& driver) { return Outcome(setter(driver, on)); });
    notes_[note] = on ? "true" : "false";
  }

  void setModel();
  void setConstellations();
  void setSurvey();
  void setOutputMode();
  void setNmeaInterval();

  void setOne();
  void readAll();

  std::mt19937 random_{GetParam()};
  std::map<std::string, std::string> notes_;
};

void ConfigurationSequence::setModel() {
  static constexpr const char* kModes[] = {"1", "1", "1", "2", "3", "4", "5", "5", "0"};
  static constexpr const char* kFixes[] = {"\"2D\", \"2D\"", "\"3D\", \"3D\"", "\"3D\", \"2D\""};
  const auto model = static_cast<unsigned char>(anyOf(0, 12));
  const auto fixMode = static_cast<unsigned char>(anyOf(0, 3));
  const bool supported = fixMode < std::size(kFixes);
  set([&](auto& driver) { return Outcome(driver.setDynamicModel(model, fixMode)); },
      supported ? 0 : 256);
  notes_["navigation mode"] = model < std::size(kModes) ? kModes[model] : "0";
  if (supported) {
    notes_["fix"] = kFixes[fixMode];
  }
}

void ConfigurationSequence::setConstellations() {
  const auto mask = anyOf<unsigned short>(0, 0xFFFF);
  set([&](auto& driver) { return Outcome(driver.setGnssSystem(mask)); });
  const unsigned int receiverMask = (mask & 0x0DU) + ((mask & 0x40U) != 0 ? 2 : 0);
  notes_["constellations"] = std::to_string(receiverMask);
  notes_["SBAS"] = notes_["QZSS"] = "false";
}

void ConfigurationSequence::setSurvey() {
  const unsigned int length = anyOf(1U, 1209600U);
  const double latitude = anyAngle(90);
  const double longitude = anyAngle(180);
  const float altitude = static_cast<float>(anyOf(-1000, 10000));
  switch (anyOf(0, 4)) {
    case 0:
      set([&](auto& driver) { return Outcome(driver.setSurveyAuto(length, 1)); });
      notes_["survey mode"] = "1";
      notes_["survey length"] = std::to_string(length);
      break;
    case 1:
      set([&](auto& driver) {
        return Outcome(driver.setSurveyStatic(latitude, longitude, altitude, 1));
      });
      notes_["survey mode"] = "2";
      notes_["position"] = Outcome(0, latitude, longitude, altitude).outputs;
      break;
    case 2:
      set([&](auto& driver) { return Outcome(driver.setSurveyMode("dynamic")); });
      notes_["survey mode"] = "0";
      break;
    case 3:
      set([&](auto& driver) { return Outcome(driver.setSurveyMode("auto")); }, 1);
      break;
    default:
      set([&](auto& driver) { return Outcome(driver.setSurveyAuto(length + 1209600, 1)); }, 1);
  }
}

void ConfigurationSequence::setOutputMode() {
  if (either()) {
    const unsigned int mode = anyOf(0U, 300U);
    const unsigned int source = anyByte();
    set([&](auto& driver) { return Outcome(driver.gpsOrb1ppsOutputMode(mode, source)); },
        mode > 255 ? 1 : 0);
    notes_["PPS mode"] = Outcome(0, mode & 0xFF, source).outputs;
  } else {
    set([](auto& driver) { return Outcome(driver.setTimeReference("GPS")); });
    notes_["PPS mode"] = "2, 1";
  }
}

void ConfigurationSequence::setNmeaInterval() {
  const unsigned int interval = anyOf(0U, 300U);
  set([&](auto& driver) { return Outcome(driver.gpsObtNmeaExtendedConfigure(interval)); },
      interval > 255 ? 1 : 0);
  notes_["NMEA interval"] = std::to_string(interval & 0xFF);
}

void ConfigurationSequence::setOne() {
  switch (anyOf(0, 12)) {
    case 0:
      return setSwitch("interference",
                       [](auto& driver, bool on) { return driver.setJammingDetection(on); });
    case 1:
      return setModel();
    case 2:
      return setWithin("pulse width", 1U, 100000U, [](auto& driver, unsigned int value) {
        return driver.gpsObtTimePulseConfigure(value);
      });
    case 3:
      return setWithin("frequency", 0U, 19200000U, [](auto& driver, unsigned int value) {
        return driver.gpsObtFreqOutputConfigure(value);
      });
    case 4:
      return setWithin("delay", -5000, 5000,
                       [](auto& driver, int value) { return driver.setAntennaDelay(value); });
    case 5:
      return setConstellations();
    case 6:
      return setSwitch("SBAS",
                       [](auto& driver, bool on) { return driver.gpsObtSbasConfigure(on); });
    case 7:
      return setSwitch("QZSS",
                       [](auto& driver, bool on) { return driver.gpsObtQzssConfigure(on); });
    case 8:
      return setSwitch("second band",
                       [](auto& driver, bool on) { return driver.gpsObtL2BandConfigure(on); });
    case 9:
      return setNmeaInterval();
    case 10:
      return setSurvey();
    case 11:
      return setOutputMode();
    default:
      if (anyOf(0, 9) == 0) {
        set([](auto& driver) { return Outcome(driver.gpsObtSetFactoryDefaults()); });
        noteFactoryDefaults();
      }
  }
}

void ConfigurationSequence::readAll() {
  const auto switchOf = [](auto getter) {
    return [getter](orbController_QN4470T01& driver) {
      bool on = false;
      const unsigned int result = (driver.*getter)(on);
      return Outcome(result, on);
    };
  };
  const auto numberOf = [](auto number, auto getter) {
    return [number, getter](orbController_QN4470T01& driver) mutable {
      const unsigned int result = (driver.*getter)(number);
      return Outcome(result, number);
    };
  };
  using Driver = orbController_QN4470T01;
  expect(notes_["interference"], [](auto& driver) {
    bool on = false;
    unsigned char status = 0;
    const unsigned int result = driver.gpsOrbGetJamDetectConfig(on, status);
    return Outcome(result, on);
  });
  expect(notes_["navigation mode"], numberOf(77U, &Driver::gpsObtGetChangeDynamicMode));
  expect(notes_["fix"], [](auto& driver) {
    std::string first;
    std::string second;
    const unsigned int result = driver.gpsObtGetFixNavConfigure(first, second);
    return Outcome(result, first, second);
  });
  expect(notes_["pulse width"], numberOf(77U, &Driver::gpsObtGetTimePulse));
  expect(notes_["frequency"], numberOf(77U, &Driver::gpsObtGetFreqOutput));
  expect(notes_["delay"], numberOf(77, &Driver::getAntennaDelay));
  expect(notes_["constellations"],
         numberOf(static_cast<unsigned short>(77), &Driver::gpsObtGetGnssConfigure));
  expect(notes_["SBAS"], switchOf(&Driver::gpsObtGetSbasConfigure));
  expect(notes_["QZSS"], switchOf(&Driver::gpsObtGetQzssConfigure));
  expect(notes_["second band"], switchOf(&Driver::gpsObtGetL2BandConfigure));
  expect(notes_["NMEA interval"], numberOf(77U, &Driver::gpsObtGetNmeaExtendedConfigure));
  expect(notes_["survey mode"] + ", " + notes_["survey length"] + ", 30, " + notes_["position"],
         [](auto& driver) {
           unsigned int mode = 77;
           unsigned int length = 77;
           unsigned int stdDev = 77;
           double latitude = 77;
           double longitude = 77;
           float altitude = 77;
           const unsigned int result =
               driver.gpsObtGetTimeMode(mode, length, stdDev, latitude, longitude, altitude);
           return Outcome(result, mode, length, stdDev, latitude, longitude, altitude);
         });
  expect(notes_["PPS mode"], [](auto& driver) {
    unsigned int mode = 77;
    unsigned int source = 77;
    const unsigned int result = driver.gpsOrbGet1ppsOutputMode(mode, source);
    return Outcome(result, mode, source);
  });
}

TEST_P(ConfigurationSequence, IsReadAsItWasSet) {
  constexpr int kSettings = 120;
  readAll();
  for (int i = 0; i < kSettings && !HasFailure(); ++i) {
    setOne();
    if (anyOf(0, 3) == 0) {
      readAll();
    }
  }
  readAll();
}

INSTANTIATE_TEST_SUITE_P(Seeds, ConfigurationSequence, testing::Range(1U, 6U));

}  // namespace
