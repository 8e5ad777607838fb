#pragma once

#include "orb-gnss/packet.h"

/// The messages that the library sends and awaits, by name.
namespace orb::message_id {

// Commands and queries.
constexpr ORBMessageMsgValue kRestartSystem = 0x0100;
constexpr ORBMessageMsgValue kQueryRevision = 0x0200;
constexpr ORBMessageMsgValue kSetFactoryDefaults = 0x0400;
constexpr ORBMessageMsgValue kSetUpSerialPort = 0x0500;
constexpr ORBMessageMsgValue kRestart = 0x643F;
constexpr ORBMessageMsgValue kQueryVersionExtension = 0x647D;

// Replies.
constexpr ORBMessageMsgValue kRevision = 0x8000;
constexpr ORBMessageMsgValue kAcknowledged = 0x8300;
constexpr ORBMessageMsgValue kRefused = 0x8400;
constexpr ORBMessageMsgValue kVersionExtension = 0x64FE;

}  // namespace orb::message_id
