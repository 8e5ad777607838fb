#pragma once

#include <memory>
#include <string>

#include "orb-gnss/export.h"
#include "orb-gnss/message_builder.h"
#include "orb-gnss/message_list.h"
#include "orb-gnss/messaging_interface.h"

/// The receiver's serial line, open for one exchange.
///
/// Construction opens the device and makes it raw; it does not set the line speed. Opening drops
/// what the line still holds in either direction. Where the device cannot be opened or set up, one
/// line on standard error says so, and the object refuses to send and to receive.
///
/// One thread uses a channel; two channels on one device at once disturb each other.
class ORB_GNSS_EXPORT orbIO final : public ORBMessagingInterface {
 public:
  /// Opens /dev/tty_gps.
  orbIO();
  /// Opens `device`. A failure names /dev/tty_gps all the same.
  explicit orbIO(std::string device);
  orbIO(const orbIO&) = delete;
  orbIO& operator=(const orbIO&) = delete;
  ~orbIO();

  /// Writes the whole packet at once. Returns 0, or -1 when the device is not open or took less
  /// than the packet. Does not wait for any answer.
  int SendMessage(ORBMessage* message) override;

  /// Waits for a message of identity `replyId` and hands it over; the caller deletes it. Null when
  /// the device is not open or no such message came in time. Only `replyId` counts: a negative
  /// acknowledgement does not end the wait for an acknowledgement.
  ///
  /// `timeout` is in seconds, counted in whole ticks of time(), and is checked only when bytes
  /// arrive: on a line that stays silent the call does not return. Once a packet with a bad
  /// checksum has come in, the call runs until the time-out and then returns the newest match.
  /// A time-out is reported on standard error, also when a message is returned.
  ORBMessage* ReceiveMessage(unsigned short replyId, int timeout) override;

  /// Makes the tty `fd` raw, without flow control and with one stop bit, and drops pending bytes.
  /// Returns false, with a line on standard error, when the tty refuses.
  bool SetupUART(int fd);

  /// Reads what is there, up to `length` bytes, without waiting. Returns the number of bytes; 0
  /// when there are none, on failure, and when the device is not open.
  long ReadFromUART(unsigned char* buffer, long length);

  /// Whether the device was opened and set up.
  bool isOpen() const;

 private:
  struct NotOpen {};
  ORB_GNSS_HIDDEN orbIO(std::string device, NotOpen);

  ORB_GNSS_HIDDEN void takeNewest(unsigned short replyId, std::unique_ptr<ORBMessage>& match);

  int fd_ = -1;
  std::unique_ptr<ORBMessageList> list_;
  std::unique_ptr<ORBMessageBuilder> builder_;
  std::string device_;
};
