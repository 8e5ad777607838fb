#include "client/inventory_connection.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <system_error>

#include "base/plain_text.h"
#include "dbus/inventory_interface.h"

namespace orb {
namespace {

using std::chrono::steady_clock;

/// Ends a call; it never leaves InventoryConnection.
struct CallFailed {
  std::string reason;
};

int check(int result, const char* what) {
  if (result < 0) {
    throw CallFailed{std::string(what) + ": " + std::generic_category().message(-result)};
  }
  return result;
}

void report(const char* method, const std::string& reason) {
  const std::string line = std::string("orb-platform: ") + method + " of the inventory service " +
                           inventory::kBusName + ": " + reason + '\n';
  std::fputs(line.c_str(), stderr);
}

/// What the other side says, for one line on a terminal: the start of it, in plain characters.
std::string quoted(std::string_view text) {
  constexpr std::size_t kLongest = 200;
  return plain(text.substr(0, kLongest)) + (text.size() > kLongest ? "..." : "");
}

int keepAnswer(sd_bus_message* answer, void* kept, sd_bus_error* /*error*/) {
  static_cast<MessageHandle*>(kept)->reset(sd_bus_message_ref(answer));
  return 1;
}

std::string describeError(sd_bus_message* answer) {
  const sd_bus_error* error = sd_bus_message_get_error(answer);
  return std::string(error->name) + ": " + quoted(error->message ? error->message : "no message");
}

}  // namespace

bool InventoryConnection::call(const char* method, const MessageStep& writeArguments,
                               const char* answerTypes, const MessageStep& readAnswer) {
  const TimePoint deadline = steady_clock::now() + kAnswerTimeout;
  try {
    if (!isUsable()) {
      connect();
    }
    sd_bus_message* rawRequest = nullptr;
    check(sd_bus_message_new_method_call(bus_.get(), &rawRequest, inventory::kBusName,
                                         inventory::kObjectPath, inventory::kInterface, method),
          "cannot make the request");
    const MessageHandle request(rawRequest);
    check(writeArguments(request.get()), "cannot make the request");

    const MessageHandle answer = exchange(request.get(), deadline);
    if (sd_bus_message_is_method_error(answer.get(), inventory::kNoSuchModule) > 0) {
      return false;
    }
    if (sd_bus_message_is_method_error(answer.get(), nullptr) > 0) {
      throw CallFailed{describeError(answer.get())};
    }
    if (sd_bus_message_has_signature(answer.get(), answerTypes) <= 0) {
      throw CallFailed{std::string("the answer has the types \"") +
                       sd_bus_message_get_signature(answer.get(), true) + "\", not \"" +
                       answerTypes + '"'};
    }
    check(readAnswer(answer.get()), "cannot read the answer");
    return true;
  } catch (const CallFailed& failure) {
    bus_.reset();
    report(method, failure.reason);
    return false;
  }
}

void InventoryConnection::connect() {
  sd_bus* bus = nullptr;
  check(sd_bus_open_system(&bus), "cannot connect to the system bus");
  bus_.reset(bus);
}

bool InventoryConnection::isUsable() const {
  if (!bus_) {
    return false;
  }
  int result = 1;
  while (result > 0) {  // A bus daemon that went away meanwhile shows here.
    result = sd_bus_process(bus_.get(), nullptr);
  }
  return result == 0 && sd_bus_is_open(bus_.get()) > 0;
}

MessageHandle InventoryConnection::exchange(sd_bus_message* request, TimePoint deadline) {
  MessageHandle answer;
  sd_bus_slot* rawSlot = nullptr;
  // sd_bus_call would wait without limit for a daemon that accepts and then says nothing.
  check(sd_bus_call_async(bus_.get(), &rawSlot, request, keepAnswer, &answer, UINT64_MAX),
        "cannot send the request");
  const SlotHandle slot(rawSlot);
  while (!answer) {
    if (check(sd_bus_process(bus_.get(), nullptr), "lost the system bus") == 0) {
      waitForTraffic(deadline);
    }
  }
  return answer;
}

void InventoryConnection::waitForTraffic(TimePoint deadline) {
  const auto left =
      std::chrono::duration_cast<std::chrono::microseconds>(deadline - steady_clock::now());
  if (left.count() <= 0) {
    throw CallFailed{"no answer within " + std::to_string(kAnswerTimeout.count()) + " seconds"};
  }
  const int result = sd_bus_wait(bus_.get(), static_cast<std::uint64_t>(left.count()));
  if (result != -EINTR) {
    check(result, "cannot wait for the answer");
  }
}

}  // namespace orb
