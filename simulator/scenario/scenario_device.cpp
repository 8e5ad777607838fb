#include "orb-sim/scenario.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "model/gps_time.h"

namespace orb::sim {

State ordinaryState() {
  State state;
  state.outputDelay = std::chrono::milliseconds(100);
  state.sky = ordinarySky();
  return state;
}

namespace {

/// The receiver's serial port is set to the speed of its line, where that matters.
State startOf(const Scenario& scenario) {
  State state = scenario.state;
  state.seed = scenario.seed;
  if (scenario.line.checksSpeed && scenario.line.baud != 0) {
    const auto* const speed =
        std::find(std::begin(kSerialSpeeds), std::end(kSerialSpeeds), scenario.line.baud);
    if (speed == std::end(kSerialSpeeds)) {
      throw std::invalid_argument("a receiver cannot be set to this speed of its line");
    }
    state.serialPort = {0, static_cast<std::uint8_t>(speed - std::begin(kSerialSpeeds))};
  }
  return state;
}

}  // namespace

ScenarioDevice::ScenarioDevice(const Scenario& scenario)
    : answers_(scenario.presence == Scenario::Presence::Answering),
      receiver_(startOf(scenario)),
      faulty_(receiver_, scenario.faults, scenario.seed),
      line_(faulty_, scenario.line, scenario.seed) {
  if (scenario.startsNow) {
    receiver_.change([](State& state) {
      setUtc(state.time,
             std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now()));
    });
  }
  receiver_.change([](State& state) {
    if (state.time.leapSecond <= utcOf(state.time)) {
      state.time.leapSecond.reset();  // it has been counted already
    }
  });
  if (scenario.startsCold) {
    receiver_.startCold();
  }
  if (scenario.talksFromTheStart) {
    receiver_.talkFromTheStart();
  }
}

Bytes ScenarioDevice::receive(const Bytes& bytes) {
  return answers_ ? line_.receive(bytes) : Bytes{};
}

Bytes ScenarioDevice::tick(std::chrono::milliseconds elapsed) {
  return answers_ ? line_.tick(elapsed) : Bytes{};
}

std::chrono::milliseconds ScenarioDevice::untilNextOutput() const {
  return answers_ ? line_.untilNextOutput() : kNever;
}

bool ScenarioDevice::takeHangUp() { return answers_ && line_.takeHangUp(); }

bool ScenarioDevice::takesMore() const { return !answers_ || line_.takesMore(); }

void ScenarioDevice::supplyAntenna(bool on) {
  receiver_.change([&](State& state) { state.antennaSupply = on; });
}

unsigned int ScenarioDevice::speed() const { return answers_ ? line_.speed() : 0; }

void ScenarioDevice::setClientSpeed(unsigned int baud) { line_.setClientSpeed(baud); }

State ScenarioDevice::state() const { return receiver_.state(); }

std::vector<FaultyDevice::Event> ScenarioDevice::events() const { return faulty_.events(); }

void ScenarioDevice::listenToPulses(PulseListener listener) {
  receiver_.listenToPulses(std::move(listener));
}

}  // namespace orb::sim
