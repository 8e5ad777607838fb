#include "interpose/i2c_device.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "i2c/bus.h"
#include "i2c/register_text.h"
#include "interpose/descriptor_path.h"
#include "interpose/message.h"
#include "interpose/system_call.h"

namespace orb::sim {
namespace {

/// The name of the file in memory that an open of the device is, and how /proc shows it.
constexpr char kOpenName[] = "orb-sim-i2c";
constexpr std::string_view kOpenLink = "/memfd:orb-sim-i2c (deleted)";

constexpr std::uintptr_t kLastAddress = 0x7F;

char devicePath[PATH_MAX];
char registersPath[PATH_MAX];

/// Calls `use(descriptor)` with the file in memory open for reading and writing.
template <typename Use>
int withOpenFile(int device, Use use) noexcept {
  const ScopedDescriptor file(openFile(DescriptorPath(device).text, O_RDWR | O_CLOEXEC));
  return file.get() < 0 ? -errno : use(file.get());
}

int storeAddress(int device, std::uintptr_t address) noexcept {
  if (address > kLastAddress) {
    return -EINVAL;
  }
  return withOpenFile(device, [&](int file) {
    const auto byte = static_cast<std::uint8_t>(address);
    return systemCall(SYS_pwrite64, file, &byte, sizeof byte, off_t{0}) == sizeof byte ? 0 : -EIO;
  });
}

/// The selected address; 0, at which nothing is, where none has been selected.
int loadAddress(int device) noexcept {
  return withOpenFile(device, [](int file) {
    std::uint8_t byte = 0;
    return systemCall(SYS_pread64, file, &byte, sizeof byte, off_t{0}) < 0 ? -EIO : byte;
  });
}

bool load(int file, PortExpander& expander) noexcept {
  char text[RegisterText::kSize + 1] = "";
  systemCall(SYS_pread64, file, text, RegisterText::kSize, off_t{0});
  return RegisterText::read(text, expander);
}

bool store(int file, const PortExpander& expander) noexcept {
  const RegisterText text(expander);
  return systemCall(SYS_pwrite64, file, text.view().data(), text.view().size(), off_t{0}) ==
         static_cast<long>(text.view().size());
}

/// Calls `use(expander)` while no other thread or process uses the bus. A transfer that fails
/// half-way has done its first half.
template <typename Use>
int onBus(Use use) noexcept {
  const ScopedDescriptor file(openFile(registersPath, O_RDWR | O_CLOEXEC));
  while (file.get() < 0 || systemCall(SYS_flock, file.get(), LOCK_EX) < 0) {
    if (errno != EINTR) {
      return -errno;
    }
  }
  PortExpander expander;
  int result = load(file.get(), expander) ? use(expander) : -EIO;
  if (result != -EIO && !store(file.get(), expander)) {
    result = -EIO;
  }
  // Closing alone would leave the lock to a child that was forked in the meantime.
  systemCall(SYS_flock, file.get(), LOCK_UN);
  return result;
}

int control(int device, unsigned long request, void* argument) noexcept {
  switch (request) {
    case I2C_SLAVE:
    case I2C_SLAVE_FORCE:
      return storeAddress(device, reinterpret_cast<std::uintptr_t>(argument));
    case I2C_PEC:
      return -EOPNOTSUPP;
    case I2C_FUNCS:
      std::memcpy(argument, &kBusFunctions, sizeof kBusFunctions);
      return 0;
    case I2C_RDWR: {
      const auto& messages = *static_cast<const i2c_rdwr_ioctl_data*>(argument);
      return onBus([&](PortExpander& expander) {
        return transfer(expander, messages.msgs, messages.nmsgs);
      });
    }
    case I2C_SMBUS: {
      const int address = loadAddress(device);
      return address < 0 ? address : onBus([&](PortExpander& expander) {
        return transferSmbus(expander, static_cast<std::uint16_t>(address),
                             *static_cast<const i2c_smbus_ioctl_data*>(argument));
      });
    }
    default:
      return -ENOTTY;
  }
}

}  // namespace

void setI2cBus(std::string_view bus) noexcept {
  const int length = static_cast<int>(bus.size());
  std::snprintf(devicePath, sizeof devicePath, "%.*s", length, bus.data());
  if (std::snprintf(registersPath, sizeof registersPath, "%.*s.registers", length, bus.data()) >=
      static_cast<int>(sizeof registersPath)) {
    endProcess("the path of the I2C bus is too long");
  }
}

bool isI2cDevice(const char* path) noexcept {
  return path != nullptr && devicePath[0] != '\0' && std::strcmp(path, devicePath) == 0;
}

int openI2cDevice(int flags) noexcept {
  const ScopedDescriptor file(memfd_create(kOpenName, MFD_CLOEXEC));
  return file.get() < 0 ? -1
                        : openFile(DescriptorPath(file.get()).text, O_PATH | (flags & O_CLOEXEC));
}

bool isI2cRequest(int descriptor, unsigned long request) noexcept {
  constexpr unsigned long kFamily = I2C_SLAVE & ~0xFFUL;
  if ((request & ~0xFFUL) != kFamily) {
    return false;
  }
  const int savedErrno = errno;
  char target[kOpenLink.size() + 1];
  const long length =
      systemCall(SYS_readlinkat, AT_FDCWD, DescriptorPath(descriptor).text, target, sizeof target);
  errno = savedErrno;
  return length > 0 && std::string_view(target, static_cast<std::size_t>(length)) == kOpenLink;
}

int controlI2cDevice(int descriptor, unsigned long request, void* argument) noexcept {
  const int result = control(descriptor, request, argument);
  if (result >= 0) {
    return result;
  }
  errno = -result;
  return -1;
}

}  // namespace orb::sim
