#pragma once

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <memory>
#include <system_error>

namespace orb {

struct BusCloser {
  // Without a flush, which would wait for a daemon that does not answer.
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
struct MessageReleaser {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
struct SlotReleaser {
  void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
struct EventReleaser {
  void operator()(sd_event* event) const { sd_event_unref(event); }
};

using BusHandle = std::unique_ptr<sd_bus, BusCloser>;
using MessageHandle = std::unique_ptr<sd_bus_message, MessageReleaser>;
using SlotHandle = std::unique_ptr<sd_bus_slot, SlotReleaser>;
using EventHandle = std::unique_ptr<sd_event, EventReleaser>;

/// Throws std::system_error with `what` where a call of sd-bus or sd-event has failed.
inline void checkBus(int result, const char* what) {
  if (result < 0) {
    throw std::system_error(-result, std::generic_category(), what);
  }
}

}  // namespace orb
