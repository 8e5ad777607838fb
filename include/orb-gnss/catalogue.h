#pragma once

#include "orb-gnss/export.h"
#include "orb-gnss/packet.h"

/// \file
/// The messages of the receiver's protocol, in words. Any thread may use all of it.

/// One message of the receiver's protocol.
struct ORBMessageInfo {
  ORBMsgId msgId;            ///< id and sub-id
  unsigned short minLength;  ///< smallest accepted payload length
  unsigned short maxLength;  ///< largest accepted payload length
  unsigned short reserved;   ///< always 0
  /// What the message does, in English. Many texts end in a blank, and two hold bytes that are not
  /// ASCII: they are byte strings, printed as they stand.
  const char* description;
};

/// Every message that the library knows, in order of id and sub-id. Messages to the receiver have
/// ids, or sub-ids, below 0x80. The last row, id 0xFF, marks the end.
ORB_GNSS_EXPORT extern const ORBMessageInfo ORBMessages[141];

/// Index of a satellite constellation in `gnssNames`.
using ORBGNSSId = int;

/// Names of the satellite constellations, indexed by `ORBGNSSId`.
ORB_GNSS_EXPORT extern const char* const gnssNames[7];

/// The description of a message, or "Unknown message type". A `length` of 0 stands for any payload
/// length; another length must lie within the message's limits. Never null.
ORB_GNSS_EXPORT const char* orbGetMessageDescription(ORBMsgId id, unsigned short length);

/// The constellation's name; "UNKNOWN" for ids above 6. `id` is not negative.
ORB_GNSS_EXPORT const char* getGnssNameById(ORBGNSSId id);
