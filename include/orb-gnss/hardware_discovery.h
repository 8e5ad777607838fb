#pragma once

#include <string>

#include "orb-gnss/export.h"

/// \file
/// What the device's inventory says of a module location. Each call asks anew, with an object of
/// its own, so that any thread may call. An empty location answers false or an empty text. What the
/// platform classes throw is passed on.

/// Whether a module is fitted at `location`.
ORB_GNSS_EXPORT bool checkAddress(int location);

/// Whether the number of PCIe BARs in the module's record "PcieEndpoints" is the number of BARs
/// found. A missing record and a difference are written to standard output, the latter without an
/// end of line. Throws std::invalid_argument where the record does not start with a number, as a
/// missing one does not, and std::out_of_range where the number is too large.
ORB_GNSS_EXPORT bool checkForEndpointInEEPROM(unsigned int location);

/// The module's hardware set id; empty where it has none.
ORB_GNSS_EXPORT std::string getModuleHardwareID(unsigned int location);

/// The module's I2C bus, a device name below /dev such as "i2c-3".
ORB_GNSS_EXPORT std::string getSolutionI2C(unsigned int location);

/// The module's SPI device.
ORB_GNSS_EXPORT std::string getSolutionSpiDev(unsigned int location);
