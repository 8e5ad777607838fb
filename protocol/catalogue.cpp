#include "orb-gnss/catalogue.h"

#include "protocol/catalogue_index.h"
#include "protocol/packet_layout.h"

// clang-format off
constexpr ORBMessageInfo ORBMessages[141] = {
    {{0x00, 0x00}, 0, 0, 0, "Null message"},
    {{0x01, 0x00}, 15, 15, 0, "Force system to restart"},
    {{0x02, 0x00}, 2, 2, 0, "Query revision information of software"},
    {{0x03, 0x00}, 2, 2, 0, "Query the CRC of the software "},
    {{0x04, 0x00}, 2, 2, 0, "Set system to factory default values "},
    {{0x05, 0x00}, 4, 4, 0, "Set up serial port COM, baud rate, data bits, stop bits and parity "},
    {{0x09, 0x00}, 3, 3, 0, "Configure and select the output message type "},
    {{0x0C, 0x00}, 3, 3, 0, "Set system power mode"},
    {{0x0E, 0x00}, 3, 3, 0, "Configure the position update rate of GNSS system"},
    {{0x10, 0x00}, 1, 1, 0, "Query the position update rate of GNSS system "},
    {{0x15, 0x00}, 1, 1, 0, "Query the power mode status of GNSS receiver "},
    {{0x2A, 0x00}, 9, 9, 0, "Configure values of DOP mask "},
    {{0x2B, 0x00}, 5, 5, 0, "Configure values of Elevation and CNR Mask "},
    {{0x2E, 0x00}, 1, 1, 0, "Query the information of DOP mask used by GNSS receiver "},
    {{0x2F, 0x00}, 1, 1, 0, "Query the values of elevation mask and CNR mask used by GNSS receiver"},
    {{0x30, 0x00}, 2, 2, 0, "Retrieve GPS ephemeris data of the GNSS receiver "},
    {{0x39, 0x00}, 3, 3, 0, "Enable or disable position pinning of GNSS receiver"},
    {{0x3A, 0x00}, 1, 1, 0, "Query position pinning status of the GNSS receiver "},
    {{0x3B, 0x00}, 12, 12, 0, "Set position pinning parameters of GNSS receiver "},
    {{0x41, 0x00}, 87, 87, 0, "Set GPS ephemeris data to the GNSS receiver "},
    {{0x44, 0x00}, 1, 1, 0, "Query 1PPS timing of the GNSS receiver"},
    {{0x45, 0x00}, 6, 6, 0, "Configure cable delay of 1PPS timing "},
    {{0x46, 0x00}, 1, 1, 0, "Query 1PPS cable delay of GNSS receiver "},
    {{0x4B, 0x00}, 3, 3, 0, "Configure NMEA talker ID of GNSS receiver "},
    {{0x4F, 0x00}, 1, 1, 0, "Query NMEA talker ID of GNSS receiver "},
    {{0x54, 0x00}, 31, 31, 0, "Configure 1PPS timing of GNSS receiver"},
    {{0x55, 0x00}, 4, 4, 0, "Configure 1PPS Output Mode of GNSS receiver "},
    {{0x56, 0x00}, 1, 1, 0, "Query 1PPS Output Mode of GNSS receiver "},
    {{0x5B, 0x00}, 2, 2, 0, "Retrieve GLONASS ephemeris data of the GNSS receiver "},
    {{0x5C, 0x00}, 43, 43, 0, "Set GLONASS ephemeris data to the GNSS receiver "},
    {{0x5F, 0x00}, 1, 1, 0, "Retrieve GLONASS time correction parameters GPS C\xEF\x81\xB4 \xEF\x81\xB4" "and     of the GNSS receiver "},
    {{0x60, 0x00}, 10, 10, 0, "Set GLONASS time correction parameters GPS C\xEF\x81\xB4 \xEF\x81\xB4" "and     to the GNSS receiver "},
    {{0x62, 0x01}, 9, 9, 0, "Configure SBAS parameters of GNSS receiver "},
    {{0x62, 0x02}, 2, 2, 0, "Query SBAS status of GNSS receiver "},
    {{0x62, 0x03}, 5, 5, 0, "Configure QZSS parameters of GNSS receiver "},
    {{0x62, 0x04}, 2, 2, 0, "Query QZSS status of GNSS receiver"},
    {{0x62, 0x05}, 27, 27, 0, "Configure SBAS advanced functions of GNSS receiver "},
    {{0x62, 0x06}, 2, 2, 0, "Query SBAS advanced functions of GNSS receiver "},
    {{0x62, 0x80}, 8, 8, 0, "SBAS status of GNSS receiver"},
    {{0x62, 0x81}, 4, 4, 0, "QZSS status of GNSS receiver"},
    {{0x62, 0x82}, 32, 32, 0, "SBAS advanced function of GNSS receiver"},
    {{0x63, 0x01}, 4, 4, 0, "Configure SAEE of GNSS receiver "},
    {{0x63, 0x02}, 2, 2, 0, "Query SAEE of GNSS receiver "},
    {{0x63, 0x80}, 3, 3, 0, "SAEE status of GNSS receiver"},
    {{0x64, 0x01}, 2, 2, 0, "Query boot status of GNSS receiver"},
    {{0x64, 0x02}, 15, 15, 0, "Configure extended NMEA message interval of GNSS Receiver "},
    {{0x64, 0x03}, 2, 2, 0, "Query extended NMEA message interval of GNSS receiver "},
    {{0x64, 0x06}, 4, 4, 0, "Configure interference detection of GNSS receiver "},
    {{0x64, 0x07}, 2, 2, 0, "Query interference detection status of GNSS receiver "},
    {{0x64, 0x0B}, 2, 2, 0, "Query parameter search engine number of GNSS receiver "},
    {{0x64, 0x11}, 5, 5, 0, "Configure the position fix mask of GNSS receiver "},
    {{0x64, 0x12}, 2, 2, 0, "Query the position fix of GNSS receiver "},
    {{0x64, 0x15}, 8, 8, 0, "Configure UTC reference time to GNSS receiver to synchronize to GPS time "},
    {{0x64, 0x16}, 2, 2, 0, "Query the UTC reference time of GNSS receiver set to synchronize to GPS time "},
    {{0x64, 0x17}, 4, 4, 0, "Configure the navigation mode of GNSS receiver "},
    {{0x64, 0x18}, 2, 2, 0, "Query the navigation mode of GNSS receiver "},
    {{0x64, 0x19}, 5, 5, 0, "Configure the GNSS constellation type used for navigation solution "},
    {{0x64, 0x1A}, 2, 2, 0, "Query the GNSS constellation type used for navigation solution"},
    {{0x64, 0x1B}, 7, 7, 0, "Software image download using ROM external loader to system flash "},
    {{0x64, 0x1C}, 2, 2, 0, "Configure the doze mode of GNSS receiver "},
    {{0x64, 0x20}, 2, 2, 0, "Query GPS time of GNSS receiver "},
    {{0x64, 0x21}, 5, 5, 0, "Configure the PSTI message interval of GNSS receiver "},
    {{0x64, 0x22}, 3, 3, 0, "Query the PSTI message interval of GNSS receiver "},
    {{0x64, 0x27}, 5, 5, 0, "Configure GNSS datum index of GNSS receiver "},
    {{0x64, 0x28}, 2, 2, 0, "Query GNSS datum index of GNSS receiver "},
    {{0x64, 0x2D}, 8, 8, 0, "Configure GPS/UTC leap seconds in UTC of GNSS receiver "},
    {{0x64, 0x2F}, 4, 4, 0, "Configure the navigation output message interval of GNSS receiver "},
    {{0x64, 0x30}, 2, 2, 0, "Query the navigation output message interval of GNSS receiver "},
    {{0x64, 0x34}, 13, 261, 0, "Configure geo-fencing data by polygon to GNSS receiver "},
    {{0x64, 0x35}, 3, 3, 0, "Query geo-fencing data by polygon of GNSS receiver "},
    {{0x64, 0x36}, 2, 2, 0, "Query multi-polygon geo-fencing result of GNSS receiver "},
    {{0x64, 0x3B}, 7, 7, 0, "Configure the NMEA String interval of GNSS receiver "},
    {{0x64, 0x3C}, 5, 5, 0, "Query the NMEA String interval of GNSS receiver "},
    {{0x64, 0x4E}, 7, 7, 0, "Software image download using internal loader to system flash "},
    {{0x64, 0x4F}, 7, 7, 0, "Software image download using external loader to system flash "},
    {{0x64, 0x50}, 4, 4, 0, "Enable/Disable second band of GNSS receiver "},
    {{0x64, 0x51}, 2, 2, 0, "Query second band status of GNSS receiver "},
    {{0x64, 0x7D}, 2, 2, 0, "Query version extension string of GNSS receiver "},
    {{0x64, 0x80}, 4, 4, 0, "Boot status of the GNSS receiver "},
    {{0x64, 0x81}, 4, 14, 0, "Extended NMEA message interval of GNSS receiver"},
    {{0x64, 0x83}, 4, 4, 0, "Interference detection status of GNSS receiver "},
    {{0x64, 0x85}, 3, 3, 0, "Parameter search engine number of GNSS receiver "},
    {{0x64, 0x88}, 4, 4, 0, "Position fix navigation mask of GNSS receiver "},
    {{0x64, 0x8A}, 7, 7, 0, "UTC reference time of GNSS receiver that synchronizes to GPS time "},
    {{0x64, 0x8B}, 3, 3, 0, "Navigation mode of GNSS receiver "},
    {{0x64, 0x8C}, 4, 4, 0, "Replying the GNSS constellation type used for navigation solution "},
    {{0x64, 0x8E}, 15, 15, 0, "GPS time of GNSS receiver "},
    {{0x64, 0x8F}, 3, 3, 0, "PSTI message interval of GNSS receiver"},
    {{0x64, 0x92}, 4, 4, 0, "Datum Index of GNSS receiver "},
    {{0x64, 0x98}, 3, 3, 0, "Navigation data message interval of GNSS receiver "},
    {{0x64, 0x99}, 20, 260, 0, "Geo-Fencing Data by Polygon of GNSS receiver "},
    {{0x64, 0x9A}, 22, 22, 0, "Multi-Polygon Geo-Fencing Result of GNSS receiver "},
    {{0x64, 0x9D}, 3, 3, 0, "NMEA String Interval of GNSS receiver"},
    {{0x64, 0x9F}, 3, 3, 0, "Second band status of GNSS receiver "},
    {{0x64, 0xFE}, 34, 34, 0, "Version extension string of GNSS receiver "},
    {{0x65, 0x01}, 7, 7, 0, "Configure 1PPS pulse width of GNSS receiver "},
    {{0x65, 0x02}, 2, 2, 0, "Query 1PPS pulse width of GNSS receiver "},
    {{0x65, 0x03}, 7, 7, 0, "Configure PPS2 frequency output of GNSS receiver "},
    {{0x65, 0x04}, 2, 2, 0, "Query PPS2 frequency output of GNSS receiver "},
    {{0x65, 0x80}, 6, 6, 0, "1PPS pulse width of GNSS receiver "},
    {{0x65, 0x81}, 6, 6, 0, "PPS2 frequency output of GNSS receiver "},
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
    {{0x80, 0x00}, 14, 14, 0, "Software revision of the receiver"},
    {{0x81, 0x00}, 4, 4, 0, "Software CRC of the receiver "},
    {{0x82, 0x00}, 2, 2, 0, "Reserved"},
    {{0x83, 0x00}, 2, 2, 0, "Message Acknowledged"},
    {{0x84, 0x00}, 2, 2, 0, "Response to an unsuccessful input message "},
    {{0x86, 0x00}, 2, 2, 0, "Position update rate of GNSS system "},
    {{0x90, 0x00}, 43, 43, 0, "GLONASS ephemeris data of the GNSS receiver "},
    {{0x92, 0x00}, 9, 9, 0, "GLONASS time correction parameters GPS"},
    {{0x93, 0x00}, 2, 2, 0, "NMEA Talker ID of GNSS receiver"},
    {{0xA8, 0x00}, 59, 59, 0, "Output user navigation data in binary format "},
    {{0xAF, 0x00}, 8, 8, 0, "DOP Mask used by the GNSS receiver"},
    {{0xB0, 0x00}, 4, 4, 0, "Elevation and CNR Mask used by the GNSS receiver "},
    {{0xB1, 0x00}, 87, 87, 0, "GPS ephemeris data of the GNSS receiver "},
    {{0xB4, 0x00}, 12, 12, 0, "Position pinning status of the GNSS receiver "},
    {{0xB9, 0x00}, 2, 2, 0, "Power mode status of GNSS receiver "},
    {{0xBB, 0x00}, 5, 5, 0, "1PPS cable delay of the GNSS receiver"},
    {{0xC2, 0x00}, 35, 35, 0, "1PPS timing information of the GNSS receiver "},
    {{0xC3, 0x00}, 3, 3, 0, "1PPS output mode of the GNSS receiver"},
    {{0xFF, 0xFF}, 0, 0, 0, "MARKER-END-OF-MESSAGE"},
};
// clang-format on

constexpr const char* const gnssNames[7] = {"GPS",  "SBAS", "GALILEO", "BEIDOU",
                                            "IMES", "QZSS", "GLONASS"};

namespace {

// Messages of this id may have any length.
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
