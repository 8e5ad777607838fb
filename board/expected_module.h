#pragma once

namespace orb {

/// Where the carrier module is fitted.
constexpr unsigned int kModuleLocation = 1;

/// Part number of the carrier module, as its hardware set id contains it.
constexpr const char* kModulePartNumber = "47205318-001";

}  // namespace orb
