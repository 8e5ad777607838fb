#include "orb-sim/scenario.h"

#include <chrono>
#include <utility>

#include "model/gps_time.h"

namespace orb::sim {

State ordinaryState() {
  State state;
  state.outputDelay = std::chrono::milliseconds(100);
  state.sky = ordinarySky();
  return state;
}

ScenarioDevice::ScenarioDevice(const Scenario& scenario)
    : answers_(scenario.presence == Scenario::Presence::Answering),
      receiver_(scenario.state),
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

State ScenarioDevice::state() const { return receiver_.state(); }

std::vector<FaultyDevice::Event> ScenarioDevice::events() const { return faulty_.events(); }

void ScenarioDevice::listenToPulses(PulseListener listener) {
  receiver_.listenToPulses(std::move(listener));
}

}  // namespace orb::sim
