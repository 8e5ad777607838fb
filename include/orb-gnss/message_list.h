#pragma once

#include <cstddef>
#include <vector>

#include "orb-gnss/export.h"
#include "orb-gnss/message.h"

/// Received messages, newest first. The list owns what it holds; a message that is taken out
/// belongs to the caller, who deletes it. One thread at a time uses a list.
class ORB_GNSS_EXPORT ORBMessageList {
 public:
  ORBMessageList();
  ORBMessageList(const ORBMessageList&) = delete;
  ORBMessageList& operator=(const ORBMessageList&) = delete;
  ~ORBMessageList();

  /// Inserts at the front. The list takes ownership, unless it runs out of memory and throws.
  void AddMessage(ORBMessage* message);

  /// Takes out the oldest message; null when the list is empty.
  ORBMessage* getMessage();

  /// Takes out the newest message of identity `value`; null when there is none.
  ORBMessage* findFirstOfMessage(ORBMessageMsgValue value);

  /// Whether there is no message.
  bool isEmpty() const;

  /// Deletes all messages, newest first.
  void Empty();

  /// Prints every message with showPacket(), newest first.
  void DumpMessages() const;

 private:
  using Position = std::vector<ORBMessage*>::iterator;
  ORB_GNSS_HIDDEN Position oldest();

  std::vector<ORBMessage*> messages_;  // oldest first
  std::size_t taken_ = 0;              // places at the front whose message getMessage() has taken
};
