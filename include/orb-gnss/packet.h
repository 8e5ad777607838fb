#pragma once

#include "orb-gnss/export.h"

/// \file
/// The fields of a packet, L being the payload length that the packet carries:
///
/// | offset | width | content |
/// |---|---|---|
/// | 0 | 2 | start bytes A0 A1 |
/// | 2 | 2 | L, big-endian: counts the id, the sub-id where there is one, and the body |
/// | 4 | 1 | message id |
/// | 5 | 1 | sub-id, for message ids 0x62 .. 0x6F only |
/// | 5 or 6 | | body |
/// | 4 + L | 1 | checksum: exclusive-or of the L payload bytes |
/// | 5 + L | 2 | end bytes 0D 0A |
///
/// The functions write and read these fields in a plain buffer. They check no bounds: the buffer
/// holds at least L + 7 bytes. Any thread may call them, on a buffer of its own.

/// A message's identity as two bytes.
struct ORBMsgId {
  unsigned char id;     ///< message id
  unsigned char subId;  ///< sub-id; 0 for an id that carries none
};

/// A message's identity as one number: id × 256 + sub-id. 0x6501 is id 0x65, sub-id 0x01; 0x8300,
/// the acknowledgement, is id 0x83 without sub-id.
using ORBMessageMsgValue = unsigned short;

/// Exclusive-or of `length` bytes, 0 .. 255; 0 for no bytes. Only the low 32 bits of `length`
/// count.
ORB_GNSS_EXPORT unsigned int orbComputeChecksum(const unsigned char* data, unsigned long length);

/// The payload length at `lengthField`, two bytes big-endian.
ORB_GNSS_EXPORT unsigned short orbGetLengthFromData(const unsigned char* lengthField);

/// The checksum byte at `checksumField`.
ORB_GNSS_EXPORT unsigned char orbGetChecksumFromData(const unsigned char* checksumField);

/// The identity at `idField`. The byte after the id is the sub-id where the id carries one; else
/// the sub-id is 0.
ORB_GNSS_EXPORT ORBMsgId orbGetMsgIdFromData(const unsigned char* idField);

/// The two-byte form of an identity.
ORB_GNSS_EXPORT ORBMsgId orbConvertClassIdTypeToStruct(ORBMessageMsgValue type);

/// The one-number form of an identity.
ORB_GNSS_EXPORT ORBMessageMsgValue orbConvertMsgIdStructToType(ORBMsgId id);

/// Writes the start bytes.
ORB_GNSS_EXPORT void orbPutStsIntoPacket(unsigned char* packet);

/// Writes the payload length.
ORB_GNSS_EXPORT void orbPutLengthIntoPacket(unsigned char* packet, unsigned short length);

/// Writes the message id, and the sub-id where the id carries one.
ORB_GNSS_EXPORT void orbPutMsgIdIntoPacket(unsigned char* packet, ORBMsgId id);

/// Copies `length` bytes to where the body starts; nothing for a null source or a length of 0.
/// Callers pass the payload length, so the one or two bytes more than the body has land on the
/// checksum and the end byte, which are written afterwards: `source` offers `length` readable
/// bytes.
ORB_GNSS_EXPORT void orbPutPayloadIntoPacket(unsigned char* packet, const unsigned char* source,
                                             unsigned short length, ORBMsgId id);

/// Computes and writes the checksum of a packet with payload length `length`; returns it.
ORB_GNSS_EXPORT unsigned int orbPutChecksumIntoPacket(unsigned char* packet, unsigned short length);

/// Writes the end bytes of a packet with payload length `length`.
ORB_GNSS_EXPORT void orbPutEtsIntoPacket(unsigned char* packet, unsigned int length);

/// Writes an identity as two bytes, id first.
ORB_GNSS_EXPORT void orbPutMsgIdIntoDataBuffer(unsigned char* buffer, ORBMessageMsgValue type);
