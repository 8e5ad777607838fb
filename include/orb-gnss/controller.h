#pragma once

#include <fstream>
#include <memory>
#include <string>

#include "orb-gnss/chip_enable.h"
#include "orb-gnss/control_interface.h"

/// The GNSS receiver of this device, as a client sees it.
///
/// Construction asks the device's inventory which module is fitted. Where it is the expected one
/// and the receiver answers on the serial line, the chip is reset once and every operation goes to
/// the module's driver. Otherwise every operation goes to a null controller, which accepts every
/// call and does nothing: construction does not fail for lack of a receiver. It waits for ever,
/// though, on a line that carries no byte at all (see orbIO::ReceiveMessage). One thread at a time
/// uses a controller, and one controller at a time the line.
class ORB_GNSS_EXPORT orbController : public ORBControlInterface {
 public:
  /// Looks for the receiver on /dev/tty_gps. What the platform classes throw is passed on.
  orbController();
  /// Looks for the receiver on `device`. The name serves that one exchange: every later command
  /// opens /dev/tty_gps.
  explicit orbController(std::string device);
  orbController(const orbController&) = delete;
  orbController& operator=(const orbController&) = delete;

  // The operations of the interface, each forwarded unchanged to the controller in use.

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

  /// Closes the general log and releases the chip interface and the controller.
  virtual ~orbController();

  /// Switches the antenna's supply: "ON" or "OFF", in any case. Returns 1 for another word, where
  /// the board's bus can be opened; else 0, also where the board cannot be reached. Without a
  /// receiver it does nothing and returns 0.
  int setAntennaPower(std::string state);

  /// Whether the module was found and the receiver answered when the controller was chosen.
  bool IsOrbitek() const;

  /// The same as IsOrbitek(); the argument is ignored.
  bool isVersionValid(std::string version) const;

  /// The same as getInfo().
  unsigned int getDefaultInfo(std::string& info);

  /// Does nothing and returns 0.
  unsigned int configuraProtocolsDefault();

  /// Chooses the controller, as construction does, and replaces the one in use; where it throws,
  /// all stays as it was. Waits for ever on a line that carries no byte at all.
  void CreateOrbitek(std::string device);

  /// Writes /tmp/orbitekChip-info.txt unless it exists: whether a receiver was found, and what
  /// getInfo() says of it after the kernel and ODM versions. Also keeps these versions.
  void saveorbitekChipInfo();

  /// Takes the fields that end in ": " off the front of `info`, and keeps those that begin with
  /// "KernelVersion", "ODMVersion" or "Revision" whole, key included. What follows the last
  /// ": " stays in `info` and is not parsed: with the text of getInfo() that is the revision.
  /// Returns 0.
  unsigned int parserGnssChipInfo(std::string& info);

  /// Puts a new module driver in use, whether or not a receiver was found, and writes the identity
  /// file as saveorbitekChipInfo() does. IsOrbitek() and the chip interface stay as they were.
  void checkorbitekCheckId();

  /// The field "KernelVersion" that parserGnssChipInfo() kept last, such as "KernelVersion 1.0.12";
  /// empty before.
  const std::string& kernelVersionField() const;
  /// The field "ODMVersion", likewise.
  const std::string& odmVersionField() const;
  /// The field "Revision", likewise.
  const std::string& revisionField() const;

 private:
  /// Seconds; the driver has a time-out of its own, and nothing reads this one.
  [[maybe_unused]] int timeoutSeconds_ = 5;
  bool isOrbitek_ = false;
  /// Opened on /var/log/orbset.log; nothing writes to it yet.
  std::ofstream generalLog_;
  std::ofstream identityFile_;
  std::string kernelVersionField_;
  std::string odmVersionField_;
  std::string revisionField_;
  /// Holds nothing.
  [[maybe_unused]] std::shared_ptr<void> spare_;
  std::shared_ptr<ORBControlInterface> controller_;
  std::shared_ptr<OrbChipEnableInterface> chip_;
};
