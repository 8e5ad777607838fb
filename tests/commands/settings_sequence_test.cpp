#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "support/operation_test.h"

namespace {

using orb::test::Call;
using orb::test::OperationTest;
using orb::test::Outcome;

/// Settings and queries in random order, on a receiver that keeps its settings. A plain map keeps
/// them beside it; the seed is the parameter.
class SettingsSequence : public OperationTest, public testing::WithParamInterface<unsigned int> {
 protected:
  SettingsSequence() { connectReceiver(); }

  int number(int lowest, int highest) {
    return std::uniform_int_distribution(lowest, highest)(random_);
  }
  unsigned char byte() { return static_cast<unsigned char>(number(0, 255)); }

  void expect(const std::string& step, const Call& call, unsigned int result,
              const std::string& outputs = "") {
    const orb::test::Observed observed = observe(call);
    EXPECT_EQ(observed.result, result) << step;
    EXPECT_EQ(observed.outputs, outputs) << step;
    EXPECT_EQ(observed.errorLog, "") << step;
  }

  void setPowerMode();
  void setRate();
  void setOutputType();
  void setInterval();
  void setFixMode();
  void setDop();
  void setMasks();
  void setMinCNo();
  void setElevationLimit();
  void readEverything();

  std::mt19937 random_{GetParam()};
  std::map<std::string, int> kept_{
      {"power", 0},    {"rate", 1},  {"type", 1},      {"interval", 1},  {"fix 1", 0}, {"fix 2", 0},
      {"dop mode", 0}, {"dop", 300}, {"mask mode", 1}, {"elevation", 5}, {"cnr", 0}};
};

void SettingsSequence::setPowerMode() {
  const std::vector<std::string> modes = {"NORMAL", "POWERSAVE", "powersave"};
  const int mode = number(0, 2);
  expect(
      "power mode",
      [&](auto& driver) {
        return Outcome(driver.setRxMode(modes.at(static_cast<std::size_t>(mode))));
      },
      mode == 2 ? 1 : 0);
  kept_["power"] = mode == 2 ? kept_["power"] : mode;
}

void SettingsSequence::setRate() {
  const unsigned char rate = byte();
  expect(
      "rate", [&](auto& driver) { return Outcome(driver.gpsObtSetCfgRate(rate)); }, 0);
  kept_["rate"] = rate;
}

void SettingsSequence::setOutputType() {
  const std::vector<std::string> types = {"NO", "NMEA", "BINARY"};
  const int type = number(0, 2);
  expect(
      "type",
      [&](auto& driver) {
        return Outcome(driver.gpsObtSetMsgType(types.at(static_cast<std::size_t>(type))));
      },
      0);
  kept_["type"] = type;
}

void SettingsSequence::setInterval() {
  const unsigned char interval = byte();
  expect(
      "interval", [&](auto& driver) { return Outcome(driver.gpsObtNavMsgConfigure(interval)); }, 0);
  kept_["interval"] = interval;
}

void SettingsSequence::setFixMode() {
  const int mode = number(0, 3);
  expect(
      "fix mode",
      [&](auto& driver) { return Outcome(driver.setFixMode(static_cast<unsigned char>(mode))); },
      mode == 3 ? 256 : 0);
  if (mode < 3) {
    kept_["fix 1"] = mode == 0 ? 1 : 0;
    kept_["fix 2"] = mode == 1 ? 0 : 1;
  }
}

void SettingsSequence::setDop() {
  expect(
      "dop", [](auto& driver) { return Outcome(driver.gpsObtDopConfigure()); }, 0);
  kept_["dop mode"] = 1;
  kept_["dop"] = 250;
}

void SettingsSequence::setMasks() {
  const unsigned char mode = byte();
  const unsigned char elevation = byte();
  const unsigned char cnr = byte();
  expect(
      "masks",
      [&](auto& driver) { return Outcome(driver.gpsObtElevConfigure(mode, elevation, cnr)); }, 0);
  kept_["mask mode"] = mode;
  kept_["elevation"] = elevation;
  kept_["cnr"] = cnr;
}

void SettingsSequence::setMinCNo() {
  const int minimum = number(-5, 45);
  const bool inRange = minimum >= 0 && minimum <= 40;
  expect(
      "minimum",
      [&](auto& driver) { return Outcome(driver.setMinCNo(static_cast<signed char>(minimum))); },
      inRange ? 0 : 1);
  if (inRange) {
    kept_["mask mode"] = 1;
    kept_["cnr"] = minimum;
  }
}

void SettingsSequence::setElevationLimit() {
  const int limit = number(0, 90);
  const bool inRange = limit >= 3 && limit <= 85;
  expect(
      "limit",
      [&](auto& driver) {
        return Outcome(driver.setElevationLimit(static_cast<unsigned char>(limit)));
      },
      inRange ? 0 : 1);
  if (inRange) {
    kept_["mask mode"] = 1;
    kept_["elevation"] = limit;
  }
}

void SettingsSequence::readEverything() {
  const auto text = [&](const std::string& name) { return std::to_string(kept_.at(name)); };
  const auto fix = [&](const std::string& name) {
    return kept_.at(name) == 1 ? "\"2D\"" : "\"3D\"";
  };
  const auto readMasks = [](auto& driver) {
    unsigned int mode = 0;
    unsigned int elevation = 0;
    unsigned int cnr = 0;
    return Outcome(driver.gpsOrbGetElevConfigure(mode, elevation, cnr), mode, elevation, cnr);
  };
  const auto readDop = [](auto& driver) {
    unsigned int mode = 0;
    unsigned int first = 0;
    unsigned int second = 0;
    unsigned int third = 0;
    return Outcome(driver.gpsObtGetDopConfigure(mode, first, second, third), mode, first, second,
                   third);
  };
  const auto readFix = [](auto& driver) {
    std::string first;
    std::string second;
    return Outcome(driver.gpsObtGetFixNavConfigure(first, second), first, second);
  };
  const auto readPower = [](auto& driver) {
    std::string mode;
    return Outcome(driver.getRxMode(mode), mode);
  };
  const auto readRate = [](auto& driver) {
    unsigned char rate = 0;
    return Outcome(driver.gpsOrbGetCfgRate(rate), rate);
  };
  const auto readInterval = [](auto& driver) {
    unsigned char interval = 0;
    return Outcome(driver.gpsObtGetNavMsg(interval), interval);
  };
  expect("read power", readPower, 0, kept_["power"] == 1 ? "\"POWERSAVE\"" : "\"NORMAL\"");
  expect("read rate", readRate, 0, text("rate"));
  expect("read interval", readInterval, 0, text("interval"));
  expect("read fix", readFix, 0, std::string(fix("fix 1")) + ", " + fix("fix 2"));
  expect("read dop", readDop, 0,
         text("dop mode") + ", " + text("dop") + ", " + text("dop") + ", " + text("dop"));
  expect("read masks", readMasks, 0,
         text("mask mode") + ", " + text("elevation") + ", " + text("cnr"));
  EXPECT_EQ(static_cast<int>(gps_.receiver.state().outputType), kept_["type"]);
}

TEST_P(SettingsSequence, IsKeptLikeInAMap) {
  const std::vector<std::function<void()>> steps = {
      [&] { setPowerMode(); }, [&] { setRate(); },    [&] { setOutputType(); },
      [&] { setInterval(); },  [&] { setFixMode(); }, [&] { setDop(); },
      [&] { setMasks(); },     [&] { setMinCNo(); },  [&] { setElevationLimit(); }};
  readEverything();
  for (int round = 0; round < 12; ++round) {
    for (int count = number(1, 3); count > 0; --count) {
      steps.at(static_cast<std::size_t>(number(0, static_cast<int>(steps.size()) - 1)))();
    }
    readEverything();
    if (HasFailure()) {
      FAIL() << "in round " << round;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Random, SettingsSequence, testing::Range(0u, 16u));

}  // namespace
