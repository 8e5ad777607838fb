#include "orb-sim/receiver.h"
#include "orb-sim/scenario.h"

namespace orb::sim {

State ordinaryState() {
  State state;
  state.sky = ordinarySky();
  return state;
}

class ScenarioDevice::Implementation {
 public:
  explicit Implementation(const Scenario& scenario)
      : silent_(scenario.presence != Scenario::Presence::Answering),
        receiver_(scenario.state),
        faulty_(receiver_, scenario.faults, scenario.seed),
        line_(faulty_, scenario.line, scenario.seed) {
    if (scenario.startsCold) {
      receiver_.startCold();
    }
    if (scenario.talksFromTheStart) {
      receiver_.talkFromTheStart();
    }
  }

  /// The device as the client finds it; null where no byte ever comes from it.
  Device* device() { return silent_ ? nullptr : &line_; }

  const Receiver& receiver() const { return receiver_; }
  const FaultyDevice& faulty() const { return faulty_; }

 private:
  bool silent_;
  Receiver receiver_;
  FaultyDevice faulty_;
  LineShaper line_;
};

ScenarioDevice::ScenarioDevice(const Scenario& scenario)
    : implementation_(std::make_unique<Implementation>(scenario)) {}

ScenarioDevice::~ScenarioDevice() = default;

Bytes ScenarioDevice::receive(const Bytes& bytes) {
  Device* const device = implementation_->device();
  return device == nullptr ? Bytes{} : device->receive(bytes);
}

Bytes ScenarioDevice::tick(std::chrono::milliseconds elapsed) {
  Device* const device = implementation_->device();
  return device == nullptr ? Bytes{} : device->tick(elapsed);
}

std::chrono::milliseconds ScenarioDevice::untilNextOutput() const {
  const Device* const device = implementation_->device();
  return device == nullptr ? kNever : device->untilNextOutput();
}

bool ScenarioDevice::takeHangUp() {
  Device* const device = implementation_->device();
  return device != nullptr && device->takeHangUp();
}

State ScenarioDevice::state() const { return implementation_->receiver().state(); }

std::vector<FaultyDevice::Event> ScenarioDevice::events() const {
  return implementation_->faulty().events();
}

}  // namespace orb::sim
