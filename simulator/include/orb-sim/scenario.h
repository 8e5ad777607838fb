#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orb-sim/device.h"
#include "orb-sim/faults.h"
#include "orb-sim/line_conditions.h"
#include "orb-sim/pulses.h"
#include "orb-sim/receiver.h"
#include "orb-sim/state.h"

namespace orb::sim {

/// The hardware set identifier of the module that the library drives.
inline constexpr char kFittedModule[] = "47205318-001";

/// A receiver under the ordinary sky, as it leaves the factory.
State ordinaryState();

/// A whole device and all that goes wrong with it. As constructed, it is healthy.
struct Scenario {
  /// What there is at the far end of the serial line.
  enum class Presence : std::uint8_t {
    Answering,  ///< a receiver that answers
    Silent,     ///< the line is there, and no byte ever comes from it
    Absent,     ///< there is no line
  };

  std::string description;  ///< one sentence
  std::uint64_t seed = 1;   ///< decides all that is left to chance

  /// What the inventory says of module location 1; nothing where no module is fitted.
  std::optional<std::string> hardwareId = kFittedModule;

  Presence presence = Presence::Answering;  ///< what there is at the far end
  bool talksFromTheStart = false;           ///< else it is silent until it has first been spoken to
  bool startsCold = false;                  ///< else it has its fix from the start
  /// At the moment that the device is constructed, its clock is set to the system's.
  bool startsNow = false;
  State state = ordinaryState();  ///< the receiver at the start
  LineConditions line;            ///< how slow and noisy its line is
  std::vector<FaultRule> faults;  ///< what goes wrong with its answers
};

/// Reads a scenario from a TOML file (see docs/scenarios.md). Throws std::runtime_error with one
/// line for each problem: file, line, key and what is wrong with it.
Scenario loadScenario(const std::filesystem::path& file);

/// Reads a scenario from TOML text; `name` stands for the file in the problems.
Scenario parseScenario(std::string_view text, const std::string& name);

/// A receiver in the circumstances of a scenario, to be plugged into a line.
class ScenarioDevice : public Device {
 public:
  /// Throws std::invalid_argument for a fault without meaning (see FaultyDevice), and for a speed
  /// of the line that is checked and that the receiver cannot be set to. Where no byte ever comes
  /// from the device, it takes every byte and does nothing.
  explicit ScenarioDevice(const Scenario& scenario);

  Bytes receive(const Bytes& bytes) override;
  Bytes tick(std::chrono::milliseconds elapsed) override;
  std::chrono::milliseconds untilNextOutput() const override;
  bool takeHangUp() override;
  bool takesMore() const override;
  unsigned int speed() const override;
  void setClientSpeed(unsigned int baud) override;

  /// Switches the supply of the antenna, without which the receiver hears no satellites.
  void supplyAntenna(bool on);

  /// A copy of the receiver's state.
  State state() const;
  /// The faults that have happened; see FaultyDevice::events().
  std::vector<FaultyDevice::Event> events() const;

  /// See Receiver::listenToPulses().
  void listenToPulses(PulseListener listener);

 private:
  bool answers_;
  Receiver receiver_;
  FaultyDevice faulty_;
  LineShaper line_;
};

}  // namespace orb::sim
