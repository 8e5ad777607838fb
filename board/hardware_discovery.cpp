#include "orb-gnss/hardware_discovery.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "base/console.h"
#include "orb-platform/orb-platform.h"

namespace {

// Asks the module at `location`; an empty location answers with a default value.
template <typename Question>
auto askModule(unsigned int location, Question question) {
  using Answer = decltype(question(std::declval<GDBusModuleResourcesClient&>()));
  if (!checkAddress(static_cast<int>(location))) {
    return Answer{};
  }
  GDBusModuleResourcesClient module;
  module.SetupDeviceAddress(location);
  return question(module);
}

bool isMissing(const Record& record) { return record.GetRecordType() == 0; }

int asSigned32(unsigned long number) { return static_cast<int>(number); }

bool isBarCountRecorded(GDBusModuleResourcesClient& module) {
  const Record record = module.GetSystemRecord("PcieEndpoints");
  std::ostream& out = orb::standardOutput();
  if (isMissing(record)) {
    out << "Could not find PcieEndpoints record" << std::endl;
  }
  const int found = asSigned32(module.GetBars().size());
  const int recorded = asSigned32(std::stoul(record.GetRecordData()));
  if (recorded != found) {
    out << "BAR size in eeprom record " << std::to_string(recorded)
        << " does not match actual BAR size " << std::to_string(found);
  }
  return recorded == found;
}

}  // namespace

bool checkAddress(int location) {
  GDBusSystemInventoryClient inventory;
  const std::vector<unsigned int> populated = inventory.GetModuleLocations();
  return std::find(populated.begin(), populated.end(), static_cast<unsigned int>(location)) !=
         populated.end();
}

bool checkForEndpointInEEPROM(unsigned int location) {
  return askModule(location, isBarCountRecorded);
}

std::string getModuleHardwareID(unsigned int location) {
  return askModule(location, [](GDBusModuleResourcesClient& module) {
    const Record record = module.GetSystemRecord("HardwareSetId");
    return isMissing(record) ? std::string() : record.GetRecordData();
  });
}

std::string getSolutionI2C(unsigned int location) {
  return askModule(location, [](GDBusModuleResourcesClient& module) { return module.GetI2CBus(); });
}

std::string getSolutionSpiDev(unsigned int location) {
  return askModule(location, [](GDBusModuleResourcesClient& module) { return module.GetSPIDev(); });
}
