#include "support/fake_board.h"

#include <algorithm>
#include <cstdio>
#include <new>

#include "orb-platform/orb-platform.h"
#include "support/hex_text.h"

namespace orb::test {

namespace {

FakeBoard* current = nullptr;

FakeBoard& board() {
  if (current == nullptr) {
    throw std::logic_error("a test that needs no board met a platform class");
  }
  return *current;
}

/// For destructors. A test that lets memory run out does not look at the calls.
void noteEnd(const char* object) {
  try {
    board().calls.emplace_back(object);
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace

FakeBoard::FakeBoard() { current = this; }
FakeBoard::~FakeBoard() { current = nullptr; }

void FakeBoard::called(const std::string& call) {
  calls.push_back(call);
  if (call == failingCall) {
    throw BoardFailure(call);
  }
}

FakeBoard::Module FakeBoard::module(unsigned int location) const {
  const auto found = modules.find(location);
  return found != modules.end() ? found->second : Module{};
}

}  // namespace orb::test

using orb::test::board;
using orb::test::Bytes;
using orb::test::hexText;
using orb::test::noteEnd;

GDBusSystemInventoryClient::GDBusSystemInventoryClient() { board().called("inventory client"); }

GDBusSystemInventoryClient::~GDBusSystemInventoryClient() { noteEnd("end of inventory client"); }

std::vector<unsigned int> GDBusSystemInventoryClient::GetModuleLocations() {
  board().called("locations");
  std::vector<unsigned int> locations;
  for (const auto& [location, module] : board().modules) {
    locations.push_back(location);
  }
  return locations;
}

struct GDBusModuleResourcesClient::Impl {
  unsigned int location = 0;
};

GDBusModuleResourcesClient::GDBusModuleResourcesClient() : impl_(std::make_shared<Impl>()) {
  board().called("resources client");
}

GDBusModuleResourcesClient::~GDBusModuleResourcesClient() { noteEnd("end of resources client"); }

void GDBusModuleResourcesClient::SetupDeviceAddress(unsigned int location) {
  board().called("address " + std::to_string(location));
  impl_->location = location;
}

Record GDBusModuleResourcesClient::GetSystemRecord(std::string name) {
  board().called("record " + name);
  const auto module = board().module(impl_->location);
  const auto found = module.records.find(name);
  return found != module.records.end() ? Record(module.recordType, found->second) : Record(0, "");
}

std::vector<PcieBar> GDBusModuleResourcesClient::GetBars() {
  board().called("BARs");
  return std::vector<PcieBar>(board().module(impl_->location).barCount);
}

std::string GDBusModuleResourcesClient::GetI2CBus() {
  board().called("I2C bus");
  return board().module(impl_->location).i2cBus;
}

std::string GDBusModuleResourcesClient::GetSPIDev() {
  board().called("SPI device");
  return board().module(impl_->location).spiDevice;
}

Record::Record(int type, std::string data) : type_(type), data_(std::move(data)) {}
Record::~Record() = default;
int Record::GetRecordType() const { return type_; }
std::string Record::GetRecordData() const { return data_; }

I2CDev::I2CDev(const std::string& path) { board().called("I2C device " + path); }

I2CDev::~I2CDev() { noteEnd("end of I2C device"); }

int I2CDev::open(int address) {
  char call[32];
  std::snprintf(call, sizeof call, "open 0x%02X", static_cast<unsigned int>(address));
  board().called(call);
  return board().i2cOpenResult;
}

int I2CDev::read(unsigned char* buffer, int count, const unsigned char* registerBytes,
                 int registerCount) {
  board().called("read " + std::to_string(count) + " from " +
                 hexText(Bytes(registerBytes, registerBytes + registerCount)));
  if (board().i2cTransferResult < 0) {
    return board().i2cTransferResult;
  }
  std::copy_n(board().registers.begin() + *registerBytes, count, buffer);
  return count;
}

int I2CDev::write(const unsigned char* buffer, int count) {
  board().called("write " + hexText(Bytes(buffer, buffer + count)));
  if (board().i2cTransferResult < 0) {
    return board().i2cTransferResult;
  }
  std::copy_n(buffer + 1, count - 1, board().registers.begin() + buffer[0]);
  return count;
}
