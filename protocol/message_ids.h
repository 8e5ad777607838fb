#pragma once

#include "orb-gnss/packet.h"

/// The messages that the library sends and awaits, by name.
namespace orb::message_id {

// Commands and queries.

constexpr ORBMessageMsgValue kRestartSystem = 0x0100;
constexpr ORBMessageMsgValue kQueryRevision = 0x0200;
constexpr ORBMessageMsgValue kSetFactoryDefaults = 0x0400;
constexpr ORBMessageMsgValue kSetUpSerialPort = 0x0500;
constexpr ORBMessageMsgValue kSelectOutputType = 0x0900;
constexpr ORBMessageMsgValue kSetPowerMode = 0x0C00;
constexpr ORBMessageMsgValue kConfigureUpdateRate = 0x0E00;
constexpr ORBMessageMsgValue kQueryUpdateRate = 0x1000;
constexpr ORBMessageMsgValue kQueryPowerMode = 0x1500;
constexpr ORBMessageMsgValue kConfigureDopMask = 0x2A00;
constexpr ORBMessageMsgValue kConfigureElevationCnrMask = 0x2B00;
constexpr ORBMessageMsgValue kQueryDopMask = 0x2E00;
constexpr ORBMessageMsgValue kQueryElevationCnrMask = 0x2F00;
constexpr ORBMessageMsgValue kQueryTiming = 0x4400;
constexpr ORBMessageMsgValue kConfigureCableDelay = 0x4500;
constexpr ORBMessageMsgValue kQueryCableDelay = 0x4600;
constexpr ORBMessageMsgValue kConfigureTiming = 0x5400;
constexpr ORBMessageMsgValue kConfigurePpsOutputMode = 0x5500;
constexpr ORBMessageMsgValue kQueryPpsOutputMode = 0x5600;
constexpr ORBMessageMsgValue kConfigureSbas = 0x6201;
constexpr ORBMessageMsgValue kQuerySbas = 0x6202;
constexpr ORBMessageMsgValue kConfigureQzss = 0x6203;
constexpr ORBMessageMsgValue kQueryQzss = 0x6204;
constexpr ORBMessageMsgValue kConfigureExtendedNmea = 0x6402;
constexpr ORBMessageMsgValue kQueryExtendedNmea = 0x6403;
constexpr ORBMessageMsgValue kConfigureInterference = 0x6406;
constexpr ORBMessageMsgValue kQueryInterference = 0x6407;
constexpr ORBMessageMsgValue kConfigureFixMask = 0x6411;
constexpr ORBMessageMsgValue kQueryFixMask = 0x6412;
constexpr ORBMessageMsgValue kConfigureNavigationMode = 0x6417;
constexpr ORBMessageMsgValue kQueryNavigationMode = 0x6418;
constexpr ORBMessageMsgValue kConfigureConstellations = 0x6419;
constexpr ORBMessageMsgValue kQueryConstellations = 0x641A;
constexpr ORBMessageMsgValue kQueryGpsTime = 0x6420;
constexpr ORBMessageMsgValue kConfigureNavigationInterval = 0x642F;
constexpr ORBMessageMsgValue kQueryNavigationInterval = 0x6430;
constexpr ORBMessageMsgValue kRestart = 0x643F;
constexpr ORBMessageMsgValue kConfigureSecondBand = 0x6450;
constexpr ORBMessageMsgValue kQuerySecondBand = 0x6451;
constexpr ORBMessageMsgValue kQueryVersionExtension = 0x647D;
constexpr ORBMessageMsgValue kConfigurePulseWidth = 0x6501;
constexpr ORBMessageMsgValue kQueryPulseWidth = 0x6502;
constexpr ORBMessageMsgValue kConfigurePps2Frequency = 0x6503;
constexpr ORBMessageMsgValue kQueryPps2Frequency = 0x6504;

// Replies.

constexpr ORBMessageMsgValue kSbas = 0x6280;
constexpr ORBMessageMsgValue kQzss = 0x6281;
constexpr ORBMessageMsgValue kExtendedNmea = 0x6481;
constexpr ORBMessageMsgValue kInterference = 0x6483;
constexpr ORBMessageMsgValue kFixMask = 0x6488;
constexpr ORBMessageMsgValue kNavigationMode = 0x648B;
constexpr ORBMessageMsgValue kConstellations = 0x648C;
constexpr ORBMessageMsgValue kGpsTime = 0x648E;
constexpr ORBMessageMsgValue kNavigationInterval = 0x6498;
constexpr ORBMessageMsgValue kSecondBand = 0x649F;
constexpr ORBMessageMsgValue kVersionExtension = 0x64FE;
constexpr ORBMessageMsgValue kPulseWidth = 0x6580;
constexpr ORBMessageMsgValue kPps2Frequency = 0x6581;
constexpr ORBMessageMsgValue kRevision = 0x8000;
constexpr ORBMessageMsgValue kAcknowledged = 0x8300;
constexpr ORBMessageMsgValue kRefused = 0x8400;
constexpr ORBMessageMsgValue kUpdateRate = 0x8600;
constexpr ORBMessageMsgValue kNavigationData = 0xA800;
constexpr ORBMessageMsgValue kDopMask = 0xAF00;
constexpr ORBMessageMsgValue kElevationCnrMask = 0xB000;
constexpr ORBMessageMsgValue kPowerMode = 0xB900;
constexpr ORBMessageMsgValue kCableDelay = 0xBB00;
constexpr ORBMessageMsgValue kTiming = 0xC200;
constexpr ORBMessageMsgValue kPpsOutputMode = 0xC300;

}  // namespace orb::message_id
