#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ostream>
#include <string>
#include <utility>

#include "base/owned_descriptor.h"
#include "orb-gnss/controller.h"
#include "orb-gnss/module_driver.h"

namespace {

constexpr const char* kIdentityFilePath = "/tmp/orbitekChip-info.txt";
constexpr const char* kFieldSeparator = ": ";
constexpr std::string::size_type kFieldSeparatorLength = 2;

// What stands at the path, a link included, stays as it is.
bool create(const char* path) {
  constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  return orb::OwnedDescriptor(
             ::open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kMode))
      .isOpen();
}

bool startsWith(const std::string& text, const char* prefix) { return text.rfind(prefix, 0) == 0; }

}  // namespace

void orbController::saveorbitekChipInfo() {
  std::string info;
  controller_->getInfo(info);
  parserGnssChipInfo(info);
  if (!create(kIdentityFilePath)) {
    return;
  }
  identityFile_.open(kIdentityFilePath, std::ios::out | std::ios::app | std::ios::ate);
  if (!identityFile_.is_open()) {
    ::unlink(kIdentityFilePath);  // left empty, it would never be written
    return;
  }
  identityFile_ << (IsOrbitek() ? "orbitek_Chip=OK" : "orbitek_Chip=NO") << std::endl;
  identityFile_ << "orbitek_Info=" << info << std::endl;
  identityFile_.close();
}

unsigned int orbController::parserGnssChipInfo(std::string& info) {
  for (;;) {
    const auto end = info.find(kFieldSeparator);
    if (end == std::string::npos) {
      return 0;
    }
    std::string field = info.substr(0, end);
    info.erase(0, end + kFieldSeparatorLength);
    if (startsWith(field, "KernelVersion")) {
      kernelVersionField_ = std::move(field);
    } else if (startsWith(field, "ODMVersion")) {
      odmVersionField_ = std::move(field);
    } else if (startsWith(field, "Revision")) {
      revisionField_ = std::move(field);
    }
  }
}

void orbController::checkorbitekCheckId() {
  controller_ = std::make_shared<orbController_QN4470T01>();
  saveorbitekChipInfo();
}

const std::string& orbController::kernelVersionField() const { return kernelVersionField_; }
const std::string& orbController::odmVersionField() const { return odmVersionField_; }
const std::string& orbController::revisionField() const { return revisionField_; }
