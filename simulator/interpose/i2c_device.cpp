#include "interpose/i2c_device.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "i2c/bus.h"
#include "interpose/message.h"
#include "interpose/shared_registers.h"
#include "interpose/system_call.h"

namespace orb::sim {
namespace {

constexpr std::uintptr_t kLastAddress = 0x7F;
constexpr std::uintptr_t kLastLongAddress = 0x3FF;

char busPath[PATH_MAX];

/// What an open descriptor of the device has: the address that its reads and writes go to, whether
/// that is a ten-bit one, and the access mode it was opened with.
///
/// It is kept as the socket's receive time-out, which means nothing to a socket that never receives
/// anything and comes back as it was set: a mark that no time-out in use has, and the state below.
struct OpenState {
  std::uint16_t address = 0;
  bool hasTenBits = false;
  int accessMode = O_RDONLY;

  std::uint16_t messageFlags() const { return hasTenBits ? I2C_M_TEN : 0; }

  /// False where the descriptor is none of the device's; errno is then changed.
  bool load(int descriptor) noexcept;
  /// Returns 0 or a negative error number.
  int store(int descriptor) const noexcept;

 private:
  static constexpr long kMark = 0x4932'4300;  // seconds: some 39 years
  static constexpr long kTenBits = 0x400;
  static constexpr long kAccessModeUnit = 0x1000;
};

bool OpenState::load(int descriptor) noexcept {
  timeval kept{};
  socklen_t size = sizeof kept;
  if (getsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &kept, &size) < 0) return false;
  const long state = kept.tv_sec - kMark;
  if (state < 0 || state >= 4 * kAccessModeUnit) return false;
  address = static_cast<std::uint16_t>(state & static_cast<long>(kLastLongAddress));
  hasTenBits = (state & kTenBits) != 0;
  accessMode = static_cast<int>(state / kAccessModeUnit);
  return true;
}

int OpenState::store(int descriptor) const noexcept {
  timeval kept{};
  kept.tv_sec = kMark + accessMode * kAccessModeUnit + (hasTenBits ? kTenBits : 0) + address;
  const int result = setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &kept, sizeof kept);
  return result < 0 ? -errno : 0;
}

/// A result as a system call gives it, of one that may be a negative error number.
int asSystemCall(int result) noexcept {
  if (result >= 0) return result;
  errno = -result;
  return -1;
}

/// Calls `use(expander)` while no other process uses the bus.
template <typename Use>
int onBus(Use use) noexcept {
  SharedRegisters registers(busPath);
  if (registers.error() < 0) return registers.error();
  const int result = use(registers.expander());
  // A transfer that fails half-way has done its first half.
  const int stored = registers.store();
  return stored < 0 ? stored : result;
}

int selectAddress(int descriptor, OpenState state, std::uintptr_t address) noexcept {
  if (address > (state.hasTenBits ? kLastLongAddress : kLastAddress)) return -EINVAL;
  state.address = static_cast<std::uint16_t>(address);
  return state.store(descriptor);
}

int selectTenBits(int descriptor, OpenState state, bool hasTenBits) noexcept {
  state.hasTenBits = hasTenBits;
  return state.store(descriptor);
}

int tellFunctions(void* argument) noexcept {
  if (argument == nullptr) return -EFAULT;
  std::memcpy(argument, &kBusFunctions, sizeof kBusFunctions);
  return 0;
}

int carryMessages(const void* argument) noexcept {
  if (argument == nullptr) return -EFAULT;
  const auto& request = *static_cast<const i2c_rdwr_ioctl_data*>(argument);
  return onBus(
      [&](PortExpander& expander) { return transfer(expander, request.msgs, request.nmsgs); });
}

int carrySmbus(const OpenState& state, const void* argument) noexcept {
  if (argument == nullptr) return -EFAULT;
  const auto& request = *static_cast<const i2c_smbus_ioctl_data*>(argument);
  return onBus([&](PortExpander& expander) {
    return state.hasTenBits ? -ENXIO : transferSmbus(expander, state.address, request);
  });
}

/// One message of a plain read or write. Returns how many bytes, or a negative error number.
int carryBytes(const OpenState& state, unsigned int flags, void* bytes, size_t size) noexcept {
  i2c_msg message{};
  message.addr = state.address;
  message.flags = static_cast<std::uint16_t>(flags | state.messageFlags());
  message.len = static_cast<std::uint16_t>(std::min<size_t>(size, kLongestMessage));
  message.buf = static_cast<std::uint8_t*>(bytes);
  const int result = onBus([&](PortExpander& expander) { return transfer(expander, &message, 1); });
  return result < 0 ? result : message.len;
}

int control(int descriptor, const OpenState& state, unsigned long request,
            void* argument) noexcept {
  const auto number = reinterpret_cast<std::uintptr_t>(argument);
  switch (request) {
    case I2C_SLAVE:
    case I2C_SLAVE_FORCE:
      return selectAddress(descriptor, state, number);
    case I2C_TENBIT:
      return selectTenBits(descriptor, state, number != 0);
    case I2C_PEC:
      return number == 0 ? 0 : -EOPNOTSUPP;
    case I2C_RETRIES:
    case I2C_TIMEOUT:
      return number > INT_MAX ? -EINVAL : 0;  // nothing on this bus is tried again or waits
    case I2C_FUNCS:
      return tellFunctions(argument);
    case I2C_RDWR:
      return carryMessages(argument);
    case I2C_SMBUS:
      return carrySmbus(state, argument);
    default:
      return -ENOTTY;
  }
}

}  // namespace

void setI2cBus(std::string_view bus) noexcept {
  if (bus.size() >= sizeof busPath) endProcess("the path of the I2C bus is too long");
  std::memcpy(busPath, bus.data(), bus.size());
  busPath[bus.size()] = '\0';
}

bool isI2cDevice(const char* path) noexcept {
  return path != nullptr && busPath[0] != '\0' && std::strcmp(path, busPath) == 0;
}

int openI2cDevice(int flags) noexcept {
  if ((flags & O_DIRECTORY) != 0) return asSystemCall(-ENOTDIR);
  if ((flags & O_CREAT) != 0 && (flags & O_EXCL) != 0) return asSystemCall(-EEXIST);
  if (systemCall(SYS_faccessat, AT_FDCWD, busPath, R_OK | W_OK) < 0) return -1;
  const int type = SOCK_SEQPACKET | ((flags & O_CLOEXEC) != 0 ? SOCK_CLOEXEC : 0) |
                   ((flags & O_NONBLOCK) != 0 ? SOCK_NONBLOCK : 0);
  const int descriptor = socket(AF_UNIX, type, 0);
  if (descriptor < 0) return -1;
  OpenState state;
  state.accessMode = flags & O_ACCMODE;
  const int stored = state.store(descriptor);
  if (stored == 0) return descriptor;
  systemCall(SYS_close, descriptor);
  return asSystemCall(stored);
}

bool isOpenOnI2cDevice(int descriptor) noexcept {
  const int savedErrno = errno;
  OpenState state;
  const bool isOpen = state.load(descriptor);
  errno = savedErrno;
  return isOpen;
}

bool isI2cRequest(unsigned long request) noexcept {
  constexpr unsigned long kFamily = I2C_RETRIES & ~0xFFUL;
  return (request & ~0xFFUL) == kFamily;
}

int controlI2cDevice(int descriptor, unsigned long request, void* argument) noexcept {
  OpenState state;
  if (!state.load(descriptor)) return asSystemCall(-EBADF);
  return asSystemCall(control(descriptor, state, request, argument));
}

ssize_t readI2cDevice(int descriptor, void* buffer, size_t size) noexcept {
  OpenState state;
  if (!state.load(descriptor) || state.accessMode == O_WRONLY) return asSystemCall(-EBADF);
  return asSystemCall(carryBytes(state, I2C_M_RD, buffer, size));
}

ssize_t writeI2cDevice(int descriptor, const void* bytes, size_t size) noexcept {
  OpenState state;
  if (!state.load(descriptor) || state.accessMode == O_RDONLY) return asSystemCall(-EBADF);
  // One type serves both directions; the bytes of a write are left alone.
  return asSystemCall(carryBytes(state, 0, const_cast<void*>(bytes), size));
}

}  // namespace orb::sim
