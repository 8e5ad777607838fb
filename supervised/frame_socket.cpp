#include "supervised/frame_socket.h"

#include <poll.h>
#include <sched.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <stdexcept>

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

/// Repeats `step`, which moves a frame, until it does: while awake, then each time that the socket
/// is ready for `events`.
template <typename Step>
Transfer moveFrame(int socket, short events, Deadline deadline, std::chrono::microseconds awake,
                   Step step) {
  const auto sleep = std::chrono::steady_clock::now() + awake;
  for (;;) {
    const ssize_t moved = step();
    if (moved > 0) {
      return Transfer::Done;
    }
    if (moved == 0 || (errno != EAGAIN && errno != EINTR)) {
      return Transfer::Closed;
    }
    if (std::chrono::steady_clock::now() < sleep) {
      ::sched_yield();
    } else if (const Transfer ready = await(socket, events, deadline); ready != Transfer::Done) {
      return ready;
    }
  }
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
  const Transfer sent = moveFrame(socket, POLLOUT, deadline, {}, [&] {
    return ::send(socket, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  });
  if (sent == Transfer::Closed && errno == EMSGSIZE) {
    throw std::length_error("an argument is too long");
  }
  return sent;
}

Transfer receiveFrame(int socket, std::string& bytes, Deadline deadline,
                      std::chrono::microseconds awake) {
  return moveFrame(socket, POLLIN, deadline, awake, [&] {
    const ssize_t size = ::recv(socket, nullptr, 0, MSG_DONTWAIT | MSG_PEEK | MSG_TRUNC);
    if (size <= 0) {
      return size;
    }
    bytes.resize(static_cast<std::size_t>(size));
    return ::recv(socket, bytes.data(), bytes.size(), MSG_DONTWAIT);
  });
}

}  // namespace orb
