#pragma once

#include <chrono>
#include <functional>

#include "dbus/sd_bus_handles.h"

namespace orb {

/// A client's connection to the inventory service on the system bus.
///
/// It is made by the first call, kept for later ones, and made anew after it broke.
class InventoryConnection {
 public:
  /// Adds a call's arguments or reads its answer; returns a negative errno when it cannot.
  using MessageStep = std::function<int(sd_bus_message*)>;

  /// What a call may take from connecting to the answer.
  static constexpr std::chrono::seconds kAnswerTimeout{2};

  /// Calls a method of the service and reads its answer, which has the signature `answerTypes`.
  ///
  /// True when `readAnswer` has read the answer. False when the location asked for holds no module,
  /// and when the service cannot be reached, is silent or answers with anything else; then one line
  /// on standard error says why.
  bool call(const char* method, const MessageStep& writeArguments, const char* answerTypes,
            const MessageStep& readAnswer);

 private:
  using TimePoint = std::chrono::steady_clock::time_point;

  void connect();
  bool isUsable() const;
  MessageHandle exchange(sd_bus_message* request, TimePoint deadline);
  void waitForTraffic(TimePoint deadline);

  BusHandle bus_;
};

}  // namespace orb
