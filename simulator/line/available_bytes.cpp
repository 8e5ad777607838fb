#include "line/available_bytes.h"

#include <unistd.h>

#include <cerrno>

namespace orb::sim {
namespace {

bool isTransient(int error) { return error == EAGAIN || error == EWOULDBLOCK || error == EINTR; }

}  // namespace

std::optional<Bytes> readAvailable(int descriptor) {
  constexpr std::size_t kBlock = 4096;
  Bytes bytes(kBlock);
  const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
  if (count == 0 || (count < 0 && !isTransient(errno))) {
    return std::nullopt;
  }
  bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return bytes;
}

bool writeAvailable(int descriptor, Bytes& bytes) {
  if (bytes.empty()) {
    return true;
  }
  const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
  if (count > 0) {
    bytes.erase(bytes.begin(), bytes.begin() + count);
  }
  return count >= 0 || isTransient(errno);
}

}  // namespace orb::sim
