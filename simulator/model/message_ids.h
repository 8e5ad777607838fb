#pragma once

#include <cstdint>

/// The messages that the receiver knows: the id byte, then the sub-id byte or 0.
namespace orb::sim::message {

using Id = std::uint16_t;

// Settings and the queries that read them back, with the reply.
constexpr Id kSetSerialPort = 0x0500;

constexpr Id kSetOutputType = 0x0900;

constexpr Id kSetPowerMode = 0x0C00;
constexpr Id kQueryPowerMode = 0x1500;
constexpr Id kPowerMode = 0xB900;

constexpr Id kSetUpdateRate = 0x0E00;
constexpr Id kQueryUpdateRate = 0x1000;
constexpr Id kUpdateRate = 0x8600;

constexpr Id kSetDopMask = 0x2A00;
constexpr Id kQueryDopMask = 0x2E00;
constexpr Id kDopMask = 0xAF00;

constexpr Id kSetElevationCnrMask = 0x2B00;
constexpr Id kQueryElevationCnrMask = 0x2F00;
constexpr Id kElevationCnrMask = 0xB000;

constexpr Id kSetCableDelay = 0x4500;
constexpr Id kQueryCableDelay = 0x4600;
constexpr Id kCableDelay = 0xBB00;

constexpr Id kSetTiming = 0x5400;
constexpr Id kQueryTiming = 0x4400;
constexpr Id kTiming = 0xC200;

constexpr Id kSetPpsOutput = 0x5500;
constexpr Id kQueryPpsOutput = 0x5600;
constexpr Id kPpsOutput = 0xC300;

constexpr Id kSetSbas = 0x6201;
constexpr Id kQuerySbas = 0x6202;
constexpr Id kSbas = 0x6280;

constexpr Id kSetQzss = 0x6203;
constexpr Id kQueryQzss = 0x6204;
constexpr Id kQzss = 0x6281;

constexpr Id kSetNmeaIntervals = 0x6402;
constexpr Id kQueryNmeaIntervals = 0x6403;
constexpr Id kNmeaIntervals = 0x6481;

constexpr Id kSetInterferenceDetection = 0x6406;
constexpr Id kQueryInterferenceDetection = 0x6407;
constexpr Id kInterferenceDetection = 0x6483;

constexpr Id kSetFixNavMask = 0x6411;
constexpr Id kQueryFixNavMask = 0x6412;
constexpr Id kFixNavMask = 0x6488;

constexpr Id kSetNavigationMode = 0x6417;
constexpr Id kQueryNavigationMode = 0x6418;
constexpr Id kNavigationMode = 0x648B;

constexpr Id kSetConstellations = 0x6419;
constexpr Id kQueryConstellations = 0x641A;
constexpr Id kConstellations = 0x648C;

constexpr Id kSetNavMessageInterval = 0x642F;
constexpr Id kQueryNavMessageInterval = 0x6430;
constexpr Id kNavMessageInterval = 0x6498;

constexpr Id kSetSecondBand = 0x6450;
constexpr Id kQuerySecondBand = 0x6451;
constexpr Id kSecondBand = 0x649F;

constexpr Id kSetPpsPulseWidth = 0x6501;
constexpr Id kQueryPpsPulseWidth = 0x6502;
constexpr Id kPpsPulseWidth = 0x6580;

constexpr Id kSetPps2Frequency = 0x6503;
constexpr Id kQueryPps2Frequency = 0x6504;
constexpr Id kPps2Frequency = 0x6581;

// Queries of what no setting changes, with the reply.
constexpr Id kQuerySoftwareRevision = 0x0200;
constexpr Id kSoftwareRevision = 0x8000;

constexpr Id kQueryGpsTime = 0x6420;
constexpr Id kGpsTime = 0x648E;

constexpr Id kQueryVersionExtension = 0x647D;
constexpr Id kVersionExtension = 0x64FE;

// Orders.
constexpr Id kSoftReset = 0x0100;
constexpr Id kSetFactoryDefaults = 0x0400;
constexpr Id kRestart = 0x643F;

// Output.
constexpr Id kNavigationData = 0xA800;

}  // namespace orb::sim::message
