#pragma once

/// \file
/// The classes through which the library sees the device it runs on: its inventory of modules and
/// its I2C buses. The reference implementation is `liborb-platform.so.0`; a device with services of
/// its own installs another library under that name, built against these headers.

#include "orb-platform/export.h"
#include "orb-platform/i2c_dev.h"
#include "orb-platform/module_resources_client.h"
#include "orb-platform/pcie_bar.h"
#include "orb-platform/record.h"
#include "orb-platform/system_inventory_client.h"
