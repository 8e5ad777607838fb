// A platform library as a device maker writes it who has an inventory of his own. It is built
// against the installed headers alone and takes the place of liborb-platform.so.0.
#include "orb-platform/orb-platform.h"

GDBusSystemInventoryClient::GDBusSystemInventoryClient() = default;
GDBusSystemInventoryClient::~GDBusSystemInventoryClient() = default;

std::vector<unsigned int> GDBusSystemInventoryClient::GetModuleLocations() { return {1}; }

// What an object has to remember goes into Impl, which is the maker's own.
struct GDBusModuleResourcesClient::Impl {
  unsigned int location = 0;
};

GDBusModuleResourcesClient::GDBusModuleResourcesClient() : impl_(std::make_shared<Impl>()) {}
GDBusModuleResourcesClient::~GDBusModuleResourcesClient() = default;

void GDBusModuleResourcesClient::SetupDeviceAddress(unsigned int location) {
  impl_->location = location;
}

Record GDBusModuleResourcesClient::GetSystemRecord(std::string name) {
  const bool exists = impl_->location == 1 && name == "HardwareSetId";
  return exists ? Record(1, "47205318-001") : Record(0, "");
}

std::vector<PcieBar> GDBusModuleResourcesClient::GetBars() { return {PcieBar{}}; }

std::string GDBusModuleResourcesClient::GetI2CBus() { return "i2c-12"; }

std::string GDBusModuleResourcesClient::GetSPIDev() { return "spidev0.1"; }

Record::Record(int type, std::string data) : type_(type), data_(std::move(data)) {}
Record::~Record() = default;

int Record::GetRecordType() const { return type_; }

std::string Record::GetRecordData() const { return data_; }

struct I2CDev::Impl {
  std::string path;
};

I2CDev::I2CDev(const std::string& path) : impl_(std::make_shared<Impl>(Impl{path})) {}
I2CDev::~I2CDev() = default;

int I2CDev::open(int address) { return impl_->path == "/dev/i2c-12" && address == 0x21 ? 0 : -1; }

int I2CDev::read(unsigned char* buffer, int count, const unsigned char* registerBytes,
                 int registerCount) {
  for (int i = 0; i < count; ++i) {
    buffer[i] = registerCount > 0 ? registerBytes[0] : 0;
  }
  return count;
}

int I2CDev::write(const unsigned char* /*buffer*/, int count) { return count; }
