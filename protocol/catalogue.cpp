#include "orb-gnss/catalogue.h"

#include "protocol/catalogue_index.h"
#include "protocol/messages.h"
#include "protocol/packet_fields.h"
#include "protocol/packet_layout.h"

namespace message = orb::message;

namespace {

// A message that the library sends has one length.
constexpr ORBMessageInfo makeRow(const orb::Request& request, const char* description) {
  return {orb::idOf(request.id), request.payloadLength, request.payloadLength, 0, description};
}

}  // namespace

// clang-format off
constexpr ORBMessageInfo ORBMessages[141] = {
    {{0x00, 0x00}, 0, 0, 0, "Null message"},
    makeRow(message::kSoftReset, "Force system to restart"),
    makeRow(message::kQuerySoftwareRevision, "Query revision information of software"),
    {{0x03, 0x00}, 2, 2, 0, "Query the CRC of the software "},
    makeRow(message::kSetFactoryDefaults, "Set system to factory default values "),
    makeRow(message::kSetSerialPort, "Set up serial port COM, baud rate, data bits, stop bits and parity "),
    makeRow(message::kSetOutputType, "Configure and select the output message type "),
    makeRow(message::kSetPowerMode, "Set system power mode"),
    makeRow(message::kSetUpdateRate, "Configure the position update rate of GNSS system"),
    makeRow(message::kQueryUpdateRate, "Query the position update rate of GNSS system "),
    makeRow(message::kQueryPowerMode, "Query the power mode status of GNSS receiver "),
    makeRow(message::kSetDopMask, "Configure values of DOP mask "),
    makeRow(message::kSetElevationCnrMask, "Configure values of Elevation and CNR Mask "),
    makeRow(message::kQueryDopMask, "Query the information of DOP mask used by GNSS receiver "),
    makeRow(message::kQueryElevationCnrMask, "Query the values of elevation mask and CNR mask used by GNSS receiver"),
    {{0x30, 0x00}, 2, 2, 0, "Retrieve GPS ephemeris data of the GNSS receiver "},
    {{0x39, 0x00}, 3, 3, 0, "Enable or disable position pinning of GNSS receiver"},
    {{0x3A, 0x00}, 1, 1, 0, "Query position pinning status of the GNSS receiver "},
    {{0x3B, 0x00}, 12, 12, 0, "Set position pinning parameters of GNSS receiver "},
    {{0x41, 0x00}, 87, 87, 0, "Set GPS ephemeris data to the GNSS receiver "},
    makeRow(message::kQueryTiming, "Query 1PPS timing of the GNSS receiver"),
    makeRow(message::kSetCableDelay, "Configure cable delay of 1PPS timing "),
    makeRow(message::kQueryCableDelay, "Query 1PPS cable delay of GNSS receiver "),
    {{0x4B, 0x00}, 3, 3, 0, "Configure NMEA talker ID of GNSS receiver "},
    {{0x4F, 0x00}, 1, 1, 0, "Query NMEA talker ID of GNSS receiver "},
    makeRow(message::kSetTiming, "Configure 1PPS timing of GNSS receiver"),
    makeRow(message::kSetPpsOutput, "Configure 1PPS Output Mode of GNSS receiver "),
    makeRow(message::kQueryPpsOutput, "Query 1PPS Output Mode of GNSS receiver "),
    {{0x5B, 0x00}, 2, 2, 0, "Retrieve GLONASS ephemeris data of the GNSS receiver "},
    {{0x5C, 0x00}, 43, 43, 0, "Set GLONASS ephemeris data to the GNSS receiver "},
    {{0x5F, 0x00}, 1, 1, 0, "Retrieve GLONASS time correction parameters GPS C\xEF\x81\xB4 \xEF\x81\xB4" "and     of the GNSS receiver "},
    {{0x60, 0x00}, 10, 10, 0, "Set GLONASS time correction parameters GPS C\xEF\x81\xB4 \xEF\x81\xB4" "and     to the GNSS receiver "},
    makeRow(message::kSetSbas, "Configure SBAS parameters of GNSS receiver "),
    makeRow(message::kQuerySbas, "Query SBAS status of GNSS receiver "),
    makeRow(message::kSetQzss, "Configure QZSS parameters of GNSS receiver "),
    makeRow(message::kQueryQzss, "Query QZSS status of GNSS receiver"),
    {{0x62, 0x05}, 27, 27, 0, "Configure SBAS advanced functions of GNSS receiver "},
    {{0x62, 0x06}, 2, 2, 0, "Query SBAS advanced functions of GNSS receiver "},
    {orb::idOf(message::kSbas), 8, 8, 0, "SBAS status of GNSS receiver"},
    {orb::idOf(message::kQzss), 4, 4, 0, "QZSS status of GNSS receiver"},
    {{0x62, 0x82}, 32, 32, 0, "SBAS advanced function of GNSS receiver"},
    {{0x63, 0x01}, 4, 4, 0, "Configure SAEE of GNSS receiver "},
    {{0x63, 0x02}, 2, 2, 0, "Query SAEE of GNSS receiver "},
    {{0x63, 0x80}, 3, 3, 0, "SAEE status of GNSS receiver"},
    {{0x64, 0x01}, 2, 2, 0, "Query boot status of GNSS receiver"},
    makeRow(message::kSetNmeaIntervals, "Configure extended NMEA message interval of GNSS Receiver "),
    makeRow(message::kQueryNmeaIntervals, "Query extended NMEA message interval of GNSS receiver "),
    makeRow(message::kSetInterferenceDetection, "Configure interference detection of GNSS receiver "),
    makeRow(message::kQueryInterferenceDetection, "Query interference detection status of GNSS receiver "),
    {{0x64, 0x0B}, 2, 2, 0, "Query parameter search engine number of GNSS receiver "},
    makeRow(message::kSetFixMask, "Configure the position fix mask of GNSS receiver "),
    makeRow(message::kQueryFixMask, "Query the position fix of GNSS receiver "),
    {{0x64, 0x15}, 8, 8, 0, "Configure UTC reference time to GNSS receiver to synchronize to GPS time "},
    {{0x64, 0x16}, 2, 2, 0, "Query the UTC reference time of GNSS receiver set to synchronize to GPS time "},
    makeRow(message::kSetNavigationMode, "Configure the navigation mode of GNSS receiver "),
    makeRow(message::kQueryNavigationMode, "Query the navigation mode of GNSS receiver "),
    makeRow(message::kSetConstellations, "Configure the GNSS constellation type used for navigation solution "),
    makeRow(message::kQueryConstellations, "Query the GNSS constellation type used for navigation solution"),
    {{0x64, 0x1B}, 7, 7, 0, "Software image download using ROM external loader to system flash "},
    {{0x64, 0x1C}, 2, 2, 0, "Configure the doze mode of GNSS receiver "},
    makeRow(message::kQueryGpsTime, "Query GPS time of GNSS receiver "),
    {{0x64, 0x21}, 5, 5, 0, "Configure the PSTI message interval of GNSS receiver "},
    {{0x64, 0x22}, 3, 3, 0, "Query the PSTI message interval of GNSS receiver "},
    {{0x64, 0x27}, 5, 5, 0, "Configure GNSS datum index of GNSS receiver "},
    {{0x64, 0x28}, 2, 2, 0, "Query GNSS datum index of GNSS receiver "},
    {{0x64, 0x2D}, 8, 8, 0, "Configure GPS/UTC leap seconds in UTC of GNSS receiver "},
    makeRow(message::kSetNavigationInterval, "Configure the navigation output message interval of GNSS receiver "),
    makeRow(message::kQueryNavigationInterval, "Query the navigation output message interval of GNSS receiver "),
    {{0x64, 0x34}, 13, 261, 0, "Configure geo-fencing data by polygon to GNSS receiver "},
    {{0x64, 0x35}, 3, 3, 0, "Query geo-fencing data by polygon of GNSS receiver "},
    {{0x64, 0x36}, 2, 2, 0, "Query multi-polygon geo-fencing result of GNSS receiver "},
    {{0x64, 0x3B}, 7, 7, 0, "Configure the NMEA String interval of GNSS receiver "},
    {{0x64, 0x3C}, 5, 5, 0, "Query the NMEA String interval of GNSS receiver "},
    {{0x64, 0x4E}, 7, 7, 0, "Software image download using internal loader to system flash "},
    {{0x64, 0x4F}, 7, 7, 0, "Software image download using external loader to system flash "},
    makeRow(message::kSetSecondBand, "Enable/Disable second band of GNSS receiver "),
    makeRow(message::kQuerySecondBand, "Query second band status of GNSS receiver "),
    makeRow(message::kQueryVersionExtension, "Query version extension string of GNSS receiver "),
    {{0x64, 0x80}, 4, 4, 0, "Boot status of the GNSS receiver "},
    {orb::idOf(message::kNmeaIntervals), 4, 14, 0, "Extended NMEA message interval of GNSS receiver"},
    {orb::idOf(message::kInterferenceDetection), 4, 4, 0, "Interference detection status of GNSS receiver "},
    {{0x64, 0x85}, 3, 3, 0, "Parameter search engine number of GNSS receiver "},
    {orb::idOf(message::kFixMask), 4, 4, 0, "Position fix navigation mask of GNSS receiver "},
    {{0x64, 0x8A}, 7, 7, 0, "UTC reference time of GNSS receiver that synchronizes to GPS time "},
    {orb::idOf(message::kNavigationMode), 3, 3, 0, "Navigation mode of GNSS receiver "},
    {orb::idOf(message::kConstellations), 4, 4, 0, "Replying the GNSS constellation type used for navigation solution "},
    {orb::idOf(message::kGpsTime), 15, 15, 0, "GPS time of GNSS receiver "},
    {{0x64, 0x8F}, 3, 3, 0, "PSTI message interval of GNSS receiver"},
    {{0x64, 0x92}, 4, 4, 0, "Datum Index of GNSS receiver "},
    {orb::idOf(message::kNavigationInterval), 3, 3, 0, "Navigation data message interval of GNSS receiver "},
    {{0x64, 0x99}, 20, 260, 0, "Geo-Fencing Data by Polygon of GNSS receiver "},
    {{0x64, 0x9A}, 22, 22, 0, "Multi-Polygon Geo-Fencing Result of GNSS receiver "},
    {{0x64, 0x9D}, 3, 3, 0, "NMEA String Interval of GNSS receiver"},
    {orb::idOf(message::kSecondBand), 3, 3, 0, "Second band status of GNSS receiver "},
    {orb::idOf(message::kVersionExtension), 34, 34, 0, "Version extension string of GNSS receiver "},
    makeRow(message::kSetPpsPulseWidth, "Configure 1PPS pulse width of GNSS receiver "),
    makeRow(message::kQueryPpsPulseWidth, "Query 1PPS pulse width of GNSS receiver "),
    makeRow(message::kSetPps2Frequency, "Configure PPS2 frequency output of GNSS receiver "),
    makeRow(message::kQueryPps2Frequency, "Query PPS2 frequency output of GNSS receiver "),
    {orb::idOf(message::kPpsPulseWidth), 6, 6, 0, "1PPS pulse width of GNSS receiver "},
    {orb::idOf(message::kPps2Frequency), 6, 6, 0, "PPS2 frequency output of GNSS receiver "},
    {{0x67, 0x01}, 87, 126, 0, "Set BEIDOU ephemeris data to the GNSS receiver"},
    {{0x67, 0x02}, 3, 3, 0, "Retrieve BEIDOU ephemeris data of the GNSS receiver "},
    {{0x67, 0x80}, 87, 126, 0, "Beidou ephemeris data of the GNSS receiver "},
    {{0x6A, 0x06}, 37, 37, 0, "Configure Real Time Kinematic mode and operational function of GNSS receiver "},
    {{0x6A, 0x07}, 2, 2, 0, "Query Real Time Kinematic mode and operational function of GNSS receiver "},
    {{0x6A, 0x0C}, 4, 4, 0, "Configure RTK slave base serial port baud rate "},
    {{0x6A, 0x0D}, 2, 2, 0, "Query RTK slave base serial port baud rate "},
    {{0x6A, 0x13}, 4, 4, 0, "Configure RTK precisely kinematic base serial port baud rate "},
    {{0x6A, 0x14}, 2, 2, 0, "Query RTK precisely kinematic base serial port baud rate "},
    {{0x6A, 0x15}, 15, 15, 0, "Configure RTK rover moving base heading and pitch offsets of GNSS receiver "},
    {{0x6A, 0x16}, 16, 16, 0, "Query RTK rover moving base heading and pitch offsets of GNSS receiver "},
    {{0x6A, 0x83}, 41, 41, 0, "Real Time Kinematic mode and operational function of GNSS receiver "},
    {{0x6A, 0x85}, 3, 3, 0, "RTK Slave Base Serial port baud rate "},
    {{0x6A, 0x88}, 3, 3, 0, "RTK precisely kinematic Base Serial port baud rate "},
    {{0x6A, 0x89}, 14, 14, 0, "Heading and pitch offsets of RTK rover moving base GNSS receiver "},
    {{0x6E, 0x01}, 85, 85, 0, "Set GALILEO ephemeris data to the GNSS receiver "},
    {{0x6E, 0x02}, 3, 3, 0, "Retrieve GALILEO ephemeris data of the GNSS receiver "},
    {{0x6E, 0x80}, 85, 85, 0, "GALILEO ephemeris data of the GNSS receiver "},
    {{0x6F, 0x03}, 77, 77, 0, "Set IRNSS ephemeris data to the GNSS receiver "},
    {{0x6F, 0x04}, 3, 3, 0, "Retrieve IRNSS ephemeris data of the GNSS receiver "},
    {{0x6F, 0x81}, 77, 77, 0, "IRNSS ephemeris data of the GNSS receiver "},
    {orb::idOf(message::kSoftwareRevision), 14, 14, 0, "Software revision of the receiver"},
    {{0x81, 0x00}, 4, 4, 0, "Software CRC of the receiver "},
    {{0x82, 0x00}, 2, 2, 0, "Reserved"},
    {orb::idOf(message::kAcknowledged), 2, 2, 0, "Message Acknowledged"},
    {orb::idOf(message::kRefused), 2, 2, 0, "Response to an unsuccessful input message "},
    {orb::idOf(message::kUpdateRate), 2, 2, 0, "Position update rate of GNSS system "},
    {{0x90, 0x00}, 43, 43, 0, "GLONASS ephemeris data of the GNSS receiver "},
    {{0x92, 0x00}, 9, 9, 0, "GLONASS time correction parameters GPS"},
    {{0x93, 0x00}, 2, 2, 0, "NMEA Talker ID of GNSS receiver"},
    {orb::idOf(message::kNavigationData), 59, 59, 0, "Output user navigation data in binary format "},
    {orb::idOf(message::kDopMask), 8, 8, 0, "DOP Mask used by the GNSS receiver"},
    {orb::idOf(message::kElevationCnrMask), 4, 4, 0, "Elevation and CNR Mask used by the GNSS receiver "},
    {{0xB1, 0x00}, 87, 87, 0, "GPS ephemeris data of the GNSS receiver "},
    {{0xB4, 0x00}, 12, 12, 0, "Position pinning status of the GNSS receiver "},
    {orb::idOf(message::kPowerMode), 2, 2, 0, "Power mode status of GNSS receiver "},
    {orb::idOf(message::kCableDelay), 5, 5, 0, "1PPS cable delay of the GNSS receiver"},
    {orb::idOf(message::kTiming), 35, 35, 0, "1PPS timing information of the GNSS receiver "},
    {orb::idOf(message::kPpsOutput), 3, 3, 0, "1PPS output mode of the GNSS receiver"},
    {{0xFF, 0xFF}, 0, 0, 0, "MARKER-END-OF-MESSAGE"},
};
// clang-format on

constexpr const char* const gnssNames[7] = {"GPS",  "SBAS", "GALILEO", "BEIDOU",
                                            "IMES", "QZSS", "GLONASS"};

namespace {

// Messages of this id may have any length; the catalogue has none of them today.
constexpr unsigned char kAnyLengthId = 0x8B;

bool lengthFits(const ORBMessageInfo& row, unsigned short length) {
  return length == 0 || (row.minLength <= length && length <= row.maxLength) ||
         row.msgId.id == kAnyLengthId;
}

constexpr bool isLongestPayloadRight() {
  unsigned long longest = 0;
  for (const ORBMessageInfo& row : ORBMessages) {
    longest = row.maxLength > longest ? row.maxLength : longest;
  }
  return longest == orb::kLongestPayload;
}
static_assert(isLongestPayloadRight());

constexpr bool isInOrder() {
  for (unsigned char row = 1; row <= orb::kLastMessage; ++row) {
    if (orb::typeOf(ORBMessages[row - 1].msgId) >= orb::typeOf(ORBMessages[row].msgId)) {
      return false;
    }
  }
  return true;
}
static_assert(isInOrder());

}  // namespace

constexpr orb::CatalogueIndex orb::kCatalogueIndex{ORBMessages};

const char* orbGetMessageDescription(ORBMsgId id, unsigned short length) {
  const unsigned char row = orb::kCatalogueIndex.rowOf(id);
  return row != orb::CatalogueIndex::kNoRow && lengthFits(ORBMessages[row], length)
             ? ORBMessages[row].description
             : "Unknown message type";
}

const char* getGnssNameById(ORBGNSSId id) {
  constexpr ORBGNSSId kLastId = 6;
  return id > kLastId ? "UNKNOWN" : gnssNames[id];
}
