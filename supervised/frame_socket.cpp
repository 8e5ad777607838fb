#include "supervised/frame_socket.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "supervised/wire.h"

namespace orb {
namespace {

/// Waits until the socket is ready for `events`.
Transfer await(int socket, short events, Deadline deadline) {
  for (;;) {
    pollfd waited{socket, events, 0};
    const int ready = ::poll(&waited, 1, millisecondsUntil(deadline));
    if (ready > 0) {
      return Transfer::Done;
    }
    if (ready == 0) {
      return Transfer::Late;
    }
    if (errno != EINTR) {
      return Transfer::Closed;
    }
  }
}

/// Moves `size` bytes by `step`, which takes what is left of them.
template <typename Byte, typename Step>
Transfer moveAll(int socket, Byte* bytes, std::size_t size, short events, Deadline deadline,
                 Step step) {
  while (size > 0) {
    const ssize_t moved = step(bytes, size);
    if (moved > 0) {
      bytes += moved;
      size -= static_cast<std::size_t>(moved);
    } else if (moved < 0 && errno == EAGAIN) {
      const Transfer ready = await(socket, events, deadline);
      if (ready != Transfer::Done) {
        return ready;
      }
    } else if (moved == 0 || errno != EINTR) {
      return Transfer::Closed;
    }
  }
  return Transfer::Done;
}

Transfer receiveAll(int socket, char* bytes, std::size_t size, Deadline deadline) {
  return moveAll(socket, bytes, size, POLLIN, deadline, [&](char* rest, std::size_t left) {
    return ::recv(socket, rest, left, MSG_DONTWAIT);
  });
}

}  // namespace

int millisecondsUntil(Deadline deadline) {
  if (deadline == kNoDeadline) {
    return -1;
  }
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  return static_cast<int>(
      std::clamp<std::int64_t>(left.count(), 0, std::numeric_limits<int>::max()));
}

Transfer sendFrame(int socket, const std::string& bytes, Deadline deadline) {
  if (bytes.size() > kLongestFrame) {
    throw std::length_error("an argument is too long");
  }
  const auto length = static_cast<std::uint32_t>(bytes.size());
  std::string frame(sizeof length, '\0');
  std::memcpy(frame.data(), &length, sizeof length);
  frame += bytes;
  return moveAll(socket, frame.data(), frame.size(), POLLOUT, deadline,
                 [&](const char* rest, std::size_t left) {
                   return ::send(socket, rest, left, MSG_DONTWAIT | MSG_NOSIGNAL);
                 });
}

Transfer receiveFrame(int socket, std::string& bytes, Deadline deadline) {
  char head[sizeof(std::uint32_t)];
  const Transfer received = receiveAll(socket, head, sizeof head, deadline);
  if (received != Transfer::Done) {
    return received;
  }
  std::uint32_t length = 0;
  std::memcpy(&length, head, sizeof length);
  if (length > kLongestFrame) {
    return Transfer::Closed;
  }
  bytes.resize(length);
  return receiveAll(socket, bytes.data(), bytes.size(), deadline);
}

}  // namespace orb
