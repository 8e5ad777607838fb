#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "orb-gnss/control_interface.h"

/// The GNSS receiver of this device for clients that cannot wait for ever.
///
/// Offers what orbController offers, in a process of its own (the worker), which this object starts
/// and ends. Every call is over at its deadline, also on a line that carries no byte: then the
/// worker is killed, the line listened to for up to 1.2 seconds, and the next call starts another
/// worker. Several threads may call; their calls are
/// done one after another. While a call is done, the serial line is locked in the manner of serial
/// tools (LCK..tty_gps in /run/lock or /var/lock), so that processes that keep to it take turns.
///
/// No process is left behind, whatever ends this one. Nothing the library prints reaches standard
/// output or standard error; lastCall() has it. Link `-lorb-gnss-supervised`, or the target
/// "supervised" of the CMake package orb-gnss.
///
/// Each operation is described at ORBControlInterface, and returns the same; one that did not come
/// to its end in time adds the bit 4, one for which the line could not be had or no worker could be
/// started is 8. Outputs are then as they were, gpsObtChipDetect() returns 0 and timeStamp() "".
class ORB_GNSS_EXPORT orbSupervisedController : public ORBControlInterface {
 public:
  /// An argument or result of call(): of any integer type, of any floating-point type.
  using Value = std::variant<bool, long long, double, std::string>;

  /// How a call ended.
  enum class Ending {
    Done,            ///< the operation returned
    DeadlineMissed,  ///< it did not, until the deadline
    WorkerEnded,     ///< the worker ended during the call: it crashed or was killed
    NotStarted,      ///< no worker could be started
    LineHeld         ///< another process held the line until the deadline
  };

  /// What was heard on the line after a missed deadline.
  enum class Line {
    NotListened,  ///< the call did not miss its deadline
    NotThere,     ///< the device cannot be opened
    Silent,       ///< no byte came
    Text,         ///< text, as NMEA sentences are
    Packets,      ///< packets of the receiver
    Garbage       ///< neither, as where the speed is wrong
  };

  /// What is known of a call besides its result.
  struct Call {
    Ending ending = Ending::Done;   ///< how it ended
    Line line = Line::NotListened;  ///< what was heard after a missed deadline
    /// In words, what went wrong and what was heard; empty for a call that was done.
    std::string problem;
    /// Why the line was not locked; empty where it was.
    std::string warning;
    /// What the library printed during the call.
    std::string standardOutput;
    std::string standardError;  ///< the same, on standard error
  };

  /// Starts nothing yet: the first call does, and looks for module and receiver as orbController
  /// does. Each call has `deadline` to be done; without one, the longest time that its operation
  /// takes on a line that carries bytes, and two seconds. After a missed deadline a call listens to
  /// the line for up to 1.2 seconds more.
  explicit orbSupervisedController(
      std::chrono::milliseconds deadline = std::chrono::milliseconds::zero());
  orbSupervisedController(const orbSupervisedController&) = delete;
  orbSupervisedController& operator=(const orbSupervisedController&) = delete;
  /// Ends the worker.
  virtual ~orbSupervisedController();

  // The operations of the interface.

  void Init() override;
  unsigned int save() override;
  unsigned int load() override;
  unsigned int resetFactoryDefaults() override;
  unsigned int resetorbitekDefaults() override;
  unsigned int restart(bool flag) override;
  unsigned int forceRestart(unsigned short mode) override;
  unsigned int setDefaultConfiguration() override;
  unsigned int setApplicationDefaults() override;
  unsigned int turnOff() override;
  unsigned int turnOn() override;
  unsigned int isOn(bool& on) override;
  unsigned int getResetInfo() override;
  unsigned int getInfo(std::string& info) override;
  unsigned int setAntennaDelay(int delay) override;
  unsigned int getAntennaDelay(int& delay) override;
  unsigned int setAntennaType(std::string type) override;
  unsigned int getAntennaType(std::string& type) override;
  unsigned int setGnssSystem(unsigned short mask, bool secondBand) override;
  unsigned int setGnssSystem(unsigned short mask) override;
  unsigned int getGnssSystem(unsigned short& mask) override;
  unsigned int setJammingDetection(bool enable) override;
  unsigned int getJammingDetection(bool& enabled) override;
  unsigned int getNavsolution(std::string key, std::string& solution) override;
  unsigned int setSurveyMode(std::string mode) override;
  unsigned int getSurveyMode(std::string& mode) override;
  unsigned int setSurveyStatic(double latitude, double longitude, double altitude,
                               double stdDev) override;
  unsigned int setSurveyAuto(unsigned int surveyLength, float stdDev) override;
  unsigned int setSurveyAuto() override;
  unsigned int setSurveyDynamic() override;
  unsigned int getSurveyInfo(unsigned char& mode, double& latitude, double& longitude,
                             double& altitude, double& reserved, unsigned int& surveyLength,
                             float& stdDev) override;
  unsigned int getSatelliteInfo(std::string& info) override;
  unsigned int getNofSatellitesInNavSol(unsigned char& count) override;
  unsigned int setMinCNo(signed char minimum) override;
  unsigned int getMinCNo(signed char& minimum) override;
  unsigned int setElevationLimit(unsigned char limit) override;
  unsigned int getElevationLimit(unsigned char& limit) override;
  unsigned int setDynamicModel(unsigned char model) override;
  unsigned int setDynamicModel(unsigned char model, unsigned char fixMode) override;
  unsigned int getDynamicModel(unsigned char& model, unsigned char& fixMode) override;
  unsigned int setFixMode(unsigned char fixMode) override;
  unsigned int setTimeReference(std::string reference) override;
  unsigned int getTimeReference(std::string& reference) override;
  unsigned int setRxMode(std::string mode) override;
  unsigned int getRxMode(std::string& mode) override;
  unsigned int setUtcStandardAuto() override;
  unsigned int setUtsStandardTime(signed char standard) override;
  unsigned int configureOrbPolling(unsigned char interval) override;
  unsigned int configureSBAS() override;
  unsigned int configureNmeaPolling(unsigned char interval) override;
  unsigned int configurNmeaPollingPartial(unsigned char interval) override;
  unsigned int configureProtocols() override;
  unsigned int configExtendedPowerManagment() override;
  unsigned int getUtcGrid(unsigned short grid) override;
  unsigned int configTimePulse(unsigned short period, unsigned char mode, bool enable) override;
  std::string timeStamp() override;
  unsigned int programGroupDelayCal(int delay) override;
  unsigned int gpsObtChipDetect() override;
  unsigned int gpsObtChipDetect(std::string device) override;
  unsigned int gpsObtSetMsgType(std::string type) override;

  /// What is known of the last call that the calling thread made, of whichever controller.
  static const Call& lastCall();

  /// Calls, by name, any operation above, of orbController or of orbController_QN4470T01 (which
  /// then is one of the worker's own). `arguments` are all of its arguments, outputs included,
  /// which come back in their places. Throws std::invalid_argument where there is no operation of
  /// this name and so many arguments, or an argument is of another type; std::logic_error where a
  /// number does not fit its type.
  Value call(const std::string& operation, std::vector<Value>& arguments);

  /// The deadline of later calls; zero for each operation's own.
  void setDeadline(std::chrono::milliseconds deadline);

 private:
  struct State;
  template <typename... Arguments>
  ORB_GNSS_HIDDEN Value callNamed(const char* operation, Arguments&... arguments);

  std::unique_ptr<State> state_;
};
