#pragma once

#include "orb-gnss/export.h"
#include "orb-gnss/message.h"

/// A channel on which messages are exchanged with the receiver. One thread at a time uses it.
class ORB_GNSS_EXPORT ORBMessagingInterface {
 public:
  /// Sends a message, which stays the caller's. Returns 0, or -1 when it could not be sent whole.
  virtual int SendMessage(ORBMessage* message) = 0;

  /// Waits up to `timeout` seconds for a message of identity `replyId`. The caller deletes it.
  /// Null when none came.
  virtual ORBMessage* ReceiveMessage(unsigned short replyId, int timeout) = 0;

 protected:
  ~ORBMessagingInterface() = default;
};
