#pragma once

#include "orb-gnss/packet.h"

namespace orb {

/// A message that the library sends.
struct Request {
  ORBMessageMsgValue id;
  unsigned short payloadLength;  ///< counts the id, the sub-id where there is one, and the body
  ORBMessageMsgValue reply = 0;  ///< the message that answers it; 0 where nothing is awaited
};

}  // namespace orb

/// The messages that the library sends and awaits, by name.
namespace orb::message {

// Replies.

constexpr ORBMessageMsgValue kSbas = 0x6280;
constexpr ORBMessageMsgValue kQzss = 0x6281;
constexpr ORBMessageMsgValue kNmeaIntervals = 0x6481;
constexpr ORBMessageMsgValue kInterferenceDetection = 0x6483;
constexpr ORBMessageMsgValue kFixMask = 0x6488;
constexpr ORBMessageMsgValue kNavigationMode = 0x648B;
constexpr ORBMessageMsgValue kConstellations = 0x648C;
constexpr ORBMessageMsgValue kGpsTime = 0x648E;
constexpr ORBMessageMsgValue kNavigationInterval = 0x6498;
constexpr ORBMessageMsgValue kSecondBand = 0x649F;
constexpr ORBMessageMsgValue kVersionExtension = 0x64FE;
constexpr ORBMessageMsgValue kPpsPulseWidth = 0x6580;
constexpr ORBMessageMsgValue kPps2Frequency = 0x6581;
constexpr ORBMessageMsgValue kSoftwareRevision = 0x8000;
constexpr ORBMessageMsgValue kAcknowledged = 0x8300;
constexpr ORBMessageMsgValue kRefused = 0x8400;
constexpr ORBMessageMsgValue kUpdateRate = 0x8600;
constexpr ORBMessageMsgValue kNavigationData = 0xA800;
constexpr ORBMessageMsgValue kDopMask = 0xAF00;
constexpr ORBMessageMsgValue kElevationCnrMask = 0xB000;
constexpr ORBMessageMsgValue kPowerMode = 0xB900;
constexpr ORBMessageMsgValue kCableDelay = 0xBB00;
constexpr ORBMessageMsgValue kTiming = 0xC200;
constexpr ORBMessageMsgValue kPpsOutput = 0xC300;

// Requests.

constexpr Request kSoftReset{0x0100, 15};
constexpr Request kQuerySoftwareRevision{0x0200, 2, kSoftwareRevision};
constexpr Request kSetFactoryDefaults{0x0400, 2};
constexpr Request kSetSerialPort{0x0500, 4};
constexpr Request kSetOutputType{0x0900, 3, kAcknowledged};
constexpr Request kSetPowerMode{0x0C00, 3};
constexpr Request kSetUpdateRate{0x0E00, 3};
constexpr Request kQueryUpdateRate{0x1000, 1, kUpdateRate};
constexpr Request kQueryPowerMode{0x1500, 1, kPowerMode};
constexpr Request kSetDopMask{0x2A00, 9};
constexpr Request kSetElevationCnrMask{0x2B00, 5};
constexpr Request kQueryDopMask{0x2E00, 1, kDopMask};
constexpr Request kQueryElevationCnrMask{0x2F00, 1, kElevationCnrMask};
constexpr Request kQueryTiming{0x4400, 1, kTiming};
constexpr Request kSetCableDelay{0x4500, 6};
constexpr Request kQueryCableDelay{0x4600, 1, kCableDelay};
constexpr Request kSetTiming{0x5400, 31};
constexpr Request kSetPpsOutput{0x5500, 4};
constexpr Request kQueryPpsOutput{0x5600, 1, kPpsOutput};
constexpr Request kSetSbas{0x6201, 9};
constexpr Request kQuerySbas{0x6202, 2, kSbas};
constexpr Request kSetQzss{0x6203, 5};
constexpr Request kQueryQzss{0x6204, 2, kQzss};
constexpr Request kSetNmeaIntervals{0x6402, 15};
constexpr Request kQueryNmeaIntervals{0x6403, 2, kNmeaIntervals};
constexpr Request kSetInterferenceDetection{0x6406, 4};
constexpr Request kQueryInterferenceDetection{0x6407, 2, kInterferenceDetection};
constexpr Request kSetFixMask{0x6411, 5};
constexpr Request kQueryFixMask{0x6412, 2, kFixMask};
constexpr Request kSetNavigationMode{0x6417, 4};
constexpr Request kQueryNavigationMode{0x6418, 2, kNavigationMode};
constexpr Request kSetConstellations{0x6419, 5};
constexpr Request kQueryConstellations{0x641A, 2, kConstellations};
constexpr Request kQueryGpsTime{0x6420, 2, kGpsTime};
constexpr Request kSetNavigationInterval{0x642F, 4};
constexpr Request kQueryNavigationInterval{0x6430, 2, kNavigationInterval};
constexpr Request kRestart{0x643F, 3};
constexpr Request kSetSecondBand{0x6450, 4};
constexpr Request kQuerySecondBand{0x6451, 2, kSecondBand};
constexpr Request kQueryVersionExtension{0x647D, 2, kVersionExtension};
constexpr Request kSetPpsPulseWidth{0x6501, 7};
constexpr Request kQueryPpsPulseWidth{0x6502, 2, kPpsPulseWidth};
constexpr Request kSetPps2Frequency{0x6503, 7};
constexpr Request kQueryPps2Frequency{0x6504, 2, kPps2Frequency};

}  // namespace orb::message
