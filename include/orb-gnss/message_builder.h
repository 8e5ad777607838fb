#pragma once

#include "orb-gnss/export.h"
#include "orb-gnss/message_list.h"

/// Cuts received bytes into checked messages.
///
/// A packet counts when its id and sub-id stand in the catalogue and its checksum is right; its
/// length is not compared with the catalogue's limits, and its end bytes are not read. The builder
/// keeps nothing of a buffer: called again with a buffer that has grown, it lists, and counts, the
/// packets in it again. One thread at a time uses a builder and its list.
class ORB_GNSS_EXPORT ORBMessageBuilder {
 public:
  /// Messages go into `list`, which outlives the builder and stays the caller's.
  explicit ORBMessageBuilder(ORBMessageList* list);
  ~ORBMessageBuilder();

  /// Scans the first `length` bytes of `buffer`, lists the good packets and counts.
  ///
  /// Returns the position after the last packet handled, good or bad: the end of a good packet
  /// (its last byte, where it has no sub-id) or the first end byte of a bad one. Returns 0 when no
  /// packet was handled or when the scan went on to the end or to the last byte of the buffer.
  ///
  /// After a bad checksum the scan goes on at the packet's first end byte, so a start sequence
  /// within the bad packet is not seen; after an unknown id it goes on after the two start bytes.
  /// `replyId` is not used.
  unsigned long update(unsigned char replyId, const unsigned char* buffer, unsigned long length);

  // Counted since construction, or since the last reset, over all calls of update().

  /// Packets with the right checksum.
  unsigned int getGoodMessageCount() const;
  /// Packets with a wrong checksum.
  unsigned int getErroredMessageCount() const;
  /// Start sequences followed by an id and sub-id that the catalogue does not have. Packets of id
  /// 0xC3, the catalogue's last message, count here too, whether good, bad or incomplete.
  unsigned int getUnknownMessageCount() const;
  /// Good acknowledgements (0x8300).
  unsigned int getAckMessageCount() const;
  /// Good negative acknowledgements (0x8400).
  unsigned int getNakMessageCount() const;

  /// Sets the five counts to 0.
  void resetMessageCounters();

 private:
  ORB_GNSS_HIDDEN void listMessage(ORBMsgId id, const unsigned char* packet,
                                   unsigned short payloadLength);

  ORBMessageList* list_;
  unsigned int good_ = 0;
  unsigned int errored_ = 0;
  unsigned int unknown_ = 0;
  unsigned int acknowledged_ = 0;
  unsigned int refused_ = 0;
};
