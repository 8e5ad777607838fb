#pragma once

#include <memory>
#include <string>
#include <vector>

#include "orb-platform/export.h"
#include "orb-platform/pcie_bar.h"
#include "orb-platform/record.h"

/// Asks the system inventory service for the resources of one module.
///
/// A location without a module has no resources: every answer is empty, without a diagnostic. The
/// answers are empty, too, when the service cannot be reached or has not answered after 2 seconds;
/// each call that meets this puts one line on standard error. An object is used from one thread at
/// a time.
class ORB_PLATFORM_EXPORT GDBusModuleResourcesClient {
 public:
  /// Never fails: the connection to the system bus is made by the first call that needs it.
  GDBusModuleResourcesClient();

  /// Closes the connection.
  ~GDBusModuleResourcesClient();

  GDBusModuleResourcesClient(const GDBusModuleResourcesClient&) = delete;
  GDBusModuleResourcesClient& operator=(const GDBusModuleResourcesClient&) = delete;

  /// Selects the module location that later calls refer to; 0 before the first call.
  void SetupDeviceAddress(unsigned int location);

  /// The named record of the module's EEPROM; type 0 and no data when the module has none by that
  /// name.
  Record GetSystemRecord(std::string name);

  /// One element per BAR found on the module's PCIe endpoint.
  std::vector<PcieBar> GetBars();

  /// The module's I2C bus, as a device name below /dev ("i2c-3").
  std::string GetI2CBus();

  /// The module's SPI device, as a device name below /dev ("spidev1.0").
  std::string GetSPIDev();

 private:
  struct Impl;
  // Shared, not unique: a library or a test that defines the members above need not define Impl.
  [[maybe_unused]] std::shared_ptr<Impl> impl_;
};
