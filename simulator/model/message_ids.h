#pragma once

#include <cstdint>

/// The messages that the receiver knows: the id byte, then the sub-id byte or 0. The names are
/// those of the library's table, the numbers are the model's own: a mistake in one of the tables
/// shows.
namespace orb::sim::message {

using Id = std::uint16_t;

// Commands and queries.
constexpr Id kRestartSystem = 0x0100;
constexpr Id kQueryRevision = 0x0200;
constexpr Id kSetFactoryDefaults = 0x0400;
constexpr Id kSetUpSerialPort = 0x0500;
constexpr Id kSelectOutputType = 0x0900;
constexpr Id kSetPowerMode = 0x0C00;
constexpr Id kConfigureUpdateRate = 0x0E00;
constexpr Id kQueryUpdateRate = 0x1000;
constexpr Id kQueryPowerMode = 0x1500;
constexpr Id kConfigureDopMask = 0x2A00;
constexpr Id kConfigureElevationCnrMask = 0x2B00;
constexpr Id kQueryDopMask = 0x2E00;
constexpr Id kQueryElevationCnrMask = 0x2F00;
constexpr Id kQueryTiming = 0x4400;
constexpr Id kConfigureCableDelay = 0x4500;
constexpr Id kQueryCableDelay = 0x4600;
constexpr Id kConfigureTiming = 0x5400;
constexpr Id kConfigurePpsOutputMode = 0x5500;
constexpr Id kQueryPpsOutputMode = 0x5600;
constexpr Id kConfigureSbas = 0x6201;
constexpr Id kQuerySbas = 0x6202;
constexpr Id kConfigureQzss = 0x6203;
constexpr Id kQueryQzss = 0x6204;
constexpr Id kConfigureExtendedNmea = 0x6402;
constexpr Id kQueryExtendedNmea = 0x6403;
constexpr Id kConfigureInterference = 0x6406;
constexpr Id kQueryInterference = 0x6407;
constexpr Id kConfigureFixMask = 0x6411;
constexpr Id kQueryFixMask = 0x6412;
constexpr Id kConfigureNavigationMode = 0x6417;
constexpr Id kQueryNavigationMode = 0x6418;
constexpr Id kConfigureConstellations = 0x6419;
constexpr Id kQueryConstellations = 0x641A;
constexpr Id kQueryGpsTime = 0x6420;
constexpr Id kConfigureNavigationInterval = 0x642F;
constexpr Id kQueryNavigationInterval = 0x6430;
constexpr Id kRestart = 0x643F;
constexpr Id kConfigureSecondBand = 0x6450;
constexpr Id kQuerySecondBand = 0x6451;
constexpr Id kQueryVersionExtension = 0x647D;
constexpr Id kConfigurePulseWidth = 0x6501;
constexpr Id kQueryPulseWidth = 0x6502;
constexpr Id kConfigurePps2Frequency = 0x6503;
constexpr Id kQueryPps2Frequency = 0x6504;

// Replies and output.
constexpr Id kSbas = 0x6280;
constexpr Id kQzss = 0x6281;
constexpr Id kExtendedNmea = 0x6481;
constexpr Id kInterference = 0x6483;
constexpr Id kFixMask = 0x6488;
constexpr Id kNavigationMode = 0x648B;
constexpr Id kConstellations = 0x648C;
constexpr Id kGpsTime = 0x648E;
constexpr Id kNavigationInterval = 0x6498;
constexpr Id kSecondBand = 0x649F;
constexpr Id kVersionExtension = 0x64FE;
constexpr Id kPulseWidth = 0x6580;
constexpr Id kPps2Frequency = 0x6581;
constexpr Id kRevision = 0x8000;
constexpr Id kAcknowledged = 0x8300;
constexpr Id kRefused = 0x8400;
constexpr Id kUpdateRate = 0x8600;
constexpr Id kNavigationData = 0xA800;
constexpr Id kDopMask = 0xAF00;
constexpr Id kElevationCnrMask = 0xB000;
constexpr Id kPowerMode = 0xB900;
constexpr Id kCableDelay = 0xBB00;
constexpr Id kTiming = 0xC200;
constexpr Id kPpsOutputMode = 0xC300;

}  // namespace orb::sim::message
