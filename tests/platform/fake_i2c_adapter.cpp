#include "fake_i2c_adapter.h"

#include <fcntl.h>
#include <linux/i2c-dev.h>
#include <linux/i2c.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <utility>

namespace orb::test {
namespace {

FakeI2CAdapter* adapter = nullptr;

constexpr std::uintptr_t kLastAddress = 0x7F;
constexpr unsigned long kSmbusFunctions = I2C_FUNC_SMBUS_BYTE | I2C_FUNC_SMBUS_BYTE_DATA |
                                          I2C_FUNC_SMBUS_WORD_DATA | I2C_FUNC_SMBUS_QUICK;

int fail(int error) {
  errno = error;
  return -1;
}

std::string hex(unsigned int byte) {
  constexpr char kDigits[] = "0123456789abcdef";
  return {kDigits[byte / 16 % 16], kDigits[byte % 16]};
}

std::string addressed(std::uint16_t address, bool reads) {
  return hex(address) + (reads ? "R" : "W");
}

}  // namespace
}  // namespace orb::test

using orb::test::adapter;

// These come before the C library's, for every library of this program.
#pragma GCC visibility push(default)

extern "C" int open(const char* path, int flags, ...) {
  if (adapter != nullptr && adapter->isAt(path)) {
    return adapter->open();
  }
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

// What fortified headers make of an open() without a mode for clang, from glibc 2.40 on.
extern "C" int __open_2(const char* path, int flags) { return open(path, flags); }

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
  va_list rest;
  va_start(rest, request);
  void* argument = va_arg(rest, void*);
  va_end(rest);
  if (adapter != nullptr && adapter->owns(descriptor)) {
    return adapter->ioctl(descriptor, request, argument);
  }
  return static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
}

extern "C" int close(int descriptor) {
  if (adapter != nullptr) {
    adapter->forget(descriptor);
  }
  return static_cast<int>(syscall(SYS_close, descriptor));
}

#pragma GCC visibility pop

namespace orb::test {

FakeI2CAdapter::FakeI2CAdapter(std::string path, Kind kind) : path_(std::move(path)), kind_(kind) {
  adapter = this;
}

FakeI2CAdapter::~FakeI2CAdapter() { adapter = nullptr; }

int FakeI2CAdapter::open() {
  // A descriptor that the kernel knows, so that none of the program's own is hidden.
  const int descriptor = static_cast<int>(syscall(SYS_openat, AT_FDCWD, "/dev/null", O_RDWR, 0));
  selected_[descriptor] = 0;
  return descriptor;
}

int FakeI2CAdapter::ioctl(int descriptor, unsigned long request, void* argument) {
  switch (request) {
    case I2C_SLAVE:
      return select(descriptor, reinterpret_cast<std::uintptr_t>(argument));
    case I2C_FUNCS:
      *static_cast<unsigned long*>(argument) = functions();
      return 0;
    case I2C_RDWR:
      return kind_ == Kind::kPlain ? transferMessages(argument) : fail(EOPNOTSUPP);
    case I2C_SMBUS:
      return transferSmbus(descriptor, argument);
    default:
      return fail(ENOTTY);
  }
}

int FakeI2CAdapter::select(int descriptor, std::uintptr_t address) {
  if (address > kLastAddress) {
    return fail(EINVAL);
  }
  if (static_cast<int>(address) == addressOfDriver) {
    return fail(EBUSY);
  }
  selected_[descriptor] = static_cast<std::uint16_t>(address);
  return 0;
}

unsigned long FakeI2CAdapter::functions() const {
  switch (kind_) {
    case Kind::kPlain:
      return I2C_FUNC_I2C | I2C_FUNC_SMBUS_EMUL;
    case Kind::kSmbusOnly:
      return kSmbusFunctions | I2C_FUNC_SMBUS_I2C_BLOCK;
    default:
      return kSmbusFunctions;
  }
}

/// The slave's registers; without such a slave, ends the transfer that `trace` tells with ENXIO.
FakeI2CAdapter::Registers* FakeI2CAdapter::slaveFor(std::uint16_t address,
                                                    const std::string& trace) {
  const auto slave = slaves_.find(address);
  if (slave != slaves_.end()) {
    return &slave->second;
  }
  transfers.push_back(trace + " N P");
  fail(ENXIO);
  return nullptr;
}

int FakeI2CAdapter::transferMessages(void* argument) {
  const auto& transfer = *static_cast<i2c_rdwr_ioctl_data*>(argument);
  constexpr int kLongestMessage = 8192;
  std::string trace;
  for (unsigned int i = 0; i < transfer.nmsgs; ++i) {
    i2c_msg& message = transfer.msgs[i];
    const bool reads = (message.flags & I2C_M_RD) != 0;
    if (message.len > kLongestMessage) {
      return fail(EINVAL);
    }
    if (isBroken) {
      return fail(EIO);
    }
    trace += (i == 0 ? "S " : " Sr ") + addressed(message.addr, reads);
    Registers* const slave = slaveFor(message.addr, trace);
    if (slave == nullptr) {
      return -1;
    }
    for (int k = 0; k < message.len; ++k) {
      if (reads) {
        message.buf[k] = (*slave)[registerPointer_++];
        trace += " [" + hex(message.buf[k]) + "]";
      } else {
        trace += " " + hex(message.buf[k]);
        (k == 0 ? registerPointer_ : (*slave)[registerPointer_++]) = message.buf[k];
      }
    }
    if (stopsAfterOneMessage) {
      return 1;
    }
  }
  transfers.push_back(trace + " P");
  return static_cast<int>(transfer.nmsgs);
}

int FakeI2CAdapter::transferSmbus(int descriptor, void* argument) {
  const auto& transfer = *static_cast<i2c_smbus_ioctl_data*>(argument);
  const bool reads = transfer.read_write == I2C_SMBUS_READ;
  const std::uint16_t address = selected_.at(descriptor);
  const bool isBlock = transfer.size == I2C_SMBUS_I2C_BLOCK_DATA;
  if (!isBlock && (transfer.size != I2C_SMBUS_BYTE || reads)) {
    return fail(EOPNOTSUPP);
  }
  const int count = isBlock ? transfer.data->block[0] : 0;
  if (isBlock && (count == 0 || count > I2C_SMBUS_BLOCK_MAX)) {
    return fail(EINVAL);
  }
  if (isBroken) {
    return fail(EIO);
  }
  std::string trace = "S " + addressed(address, false);
  Registers* const slave = slaveFor(address, trace);
  if (slave == nullptr) {
    return -1;
  }
  registerPointer_ = transfer.command;
  trace += " " + hex(transfer.command) + (reads ? " Sr " + addressed(address, true) : "");
  for (int k = 1; k <= count; ++k) {
    std::uint8_t& stored = (*slave)[registerPointer_++];
    std::uint8_t& carried = transfer.data->block[k];
    (reads ? carried : stored) = reads ? stored : carried;
    trace += reads ? " [" + hex(carried) + "]" : " " + hex(carried);
  }
  transfers.push_back(trace + " P");
  return 0;
}

}  // namespace orb::test
