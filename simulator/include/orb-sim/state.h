#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "orb-sim/bytes.h"

namespace orb::sim {

struct Version {
  std::uint8_t x = 0;
  std::uint8_t y = 0;
  std::uint8_t z = 0;
};

/// What the receiver says of itself.
struct Identity {
  Version kernel{1, 0, 12};
  Version odm{1, 2, 0};
  std::uint8_t revisionYear = 24;  ///< two digits
  std::uint8_t revisionMonth = 3;
  std::uint8_t revisionDay = 15;
  std::string versionExtension = "ORB-SIM";  ///< at most 32 bytes are reported
};

/// What the receiver sends of its own accord. Any other value is kept as set and sends nothing.
enum class OutputType : std::uint8_t { None = 0, Nmea = 1, Binary = 2 };

/// Any other value is kept as set and navigates like Dynamic.
enum class TimingMode : std::uint8_t { Dynamic = 0, AutoSurvey = 1, Static = 2 };

struct SerialPort {
  std::uint8_t port = 0;
  std::uint8_t baudCode = 5;  ///< 0 to 5: 4800, 9600, 19200, 38400, 57600, 115200 baud
};

struct DopMask {
  std::uint8_t mode = 0;
  std::array<std::uint16_t, 3> limits{300, 300, 300};  ///< in tenths
};

struct ElevationCnrMask {
  std::uint8_t mode = 1;
  std::uint8_t elevation = 5;  ///< degrees
  std::uint8_t cnr = 0;        ///< dB-Hz
};

/// 0 asks for a 3D fix, 1 for a 2D fix.
struct FixNavMask {
  std::uint8_t first = 0;
  std::uint8_t second = 0;
};

struct Timing {
  TimingMode mode = TimingMode::Dynamic;
  std::uint32_t surveyLength = 2000;  ///< seconds
  std::uint32_t standardDeviation = 30;
  double latitude = 0;   ///< degrees
  double longitude = 0;  ///< degrees
  float altitude = 0;    ///< metres
};

struct PpsOutput {
  std::uint8_t mode = 0;
  std::uint8_t alignSource = 0;  ///< 0 GNSS time, 1 UTC
};

/// Every setting that a command can change, as last set. The default values are the factory's.
struct Settings {
  SerialPort serialPort;
  OutputType outputType = OutputType::Nmea;
  std::uint8_t powerMode = 0;   ///< 0 normal, 1 power saving
  std::uint8_t updateRate = 1;  ///< in Hz; 0 sends nothing
  DopMask dopMask;
  ElevationCnrMask elevationCnrMask;
  std::int32_t cableDelay = 0;  ///< hundredths of a nanosecond
  Timing timing;
  PpsOutput ppsOutput;
  std::array<std::uint8_t, 6> sbas{1, 1, 8, 1, 3, 7};  ///< first byte: enabled
  std::array<std::uint8_t, 2> qzss{1, 3};              ///< first byte: enabled
  /// Epochs between two sentences of a kind; 0: never. GGA, GSA, GSV, GLL, RMC, VTG, ZDA, ...
  std::array<std::uint8_t, 12> nmeaIntervals{1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0};
  std::uint8_t interferenceDetection = 0;
  FixNavMask fixNavMask;
  std::uint8_t navigationMode = 0;
  std::uint16_t constellations = 0x0003;  ///< bits: 0 GPS, 1 GLONASS, 2 Galileo, 3 BeiDou
  std::uint8_t navMessageInterval = 1;    ///< epochs between two navigation messages; 0: never
  std::uint8_t secondBand = 0;
  std::uint32_t ppsPulseWidth = 1000;  ///< microseconds
  std::uint32_t pps2Frequency = 0;     ///< Hz

  /// The attribute byte that came with each setting, by message; nothing for one never set.
  std::map<std::uint16_t, std::uint8_t> attributes;
};

/// The solution that the receiver reports.
struct Navigation {
  std::uint8_t fixMode = 2;  ///< 0 none, 1 2D, 2 3D, 3 3D with differential corrections
  std::uint8_t satellites = 9;
  std::int32_t latitude = 483712345;          ///< 1e-7 degree
  std::int32_t longitude = 115678901;         ///< 1e-7 degree
  std::int32_t ellipsoidAltitude = 52012;     ///< centimetres
  std::int32_t meanSeaLevelAltitude = 47590;  ///< centimetres
  /// Geometric, position, horizontal, vertical and time dilution of precision, in hundredths.
  std::array<std::uint16_t, 5> dops{180, 160, 90, 130, 85};
};

struct GpsTime {
  std::uint16_t week = 2300;
  std::chrono::milliseconds timeOfWeek{345678000};
  std::uint8_t leapSeconds = 18;
  std::uint8_t valid = 7;  ///< one bit each: time of week, week, leap seconds
};

enum class Constellation : std::uint8_t { Gps, Glonass, Galileo, Beidou, Qzss, Sbas };

/// A satellite above the horizon, as the antenna sees it.
struct Satellite {
  Constellation constellation = Constellation::Gps;
  std::uint8_t number = 1;  ///< PRN or slot within its constellation, counted from 1
  double elevation = 45;    ///< degrees above the horizon
  double azimuth = 0;       ///< degrees from north through east
  std::uint8_t cnr = 40;    ///< dB-Hz
};

struct Waypoint {
  std::chrono::milliseconds at{0};  ///< since the simulation began
  double latitude = 0;              ///< degrees
  double longitude = 0;             ///< degrees
  double altitude = 0;              ///< metres above the ellipsoid
};

/// The antenna's way, straight from waypoint to waypoint. Without waypoints it stands where
/// Navigation says.
struct Track {
  std::vector<Waypoint> waypoints;  ///< in order of time
  bool repeats = false;             ///< at the end, it begins anew; otherwise the antenna stops
};

/// How long the receiver takes after a restart.
struct StartTimes {
  std::chrono::milliseconds silence{0};  ///< until it hears and says anything
  // Until it has a fix, by what it still knows.
  std::chrono::milliseconds cold{35000};
  std::chrono::milliseconds warm{28000};
  std::chrono::milliseconds hot{1000};
};

/// Everything that a receiver knows: its settings, what it measures, and what happened to it.
struct State : Settings {
  Identity identity;
  Navigation navigation;
  GpsTime time;
  std::uint8_t interferenceStatus = 1;
  std::chrono::milliseconds surveyed{0};  ///< since the survey began

  /// The satellites in view. With some, the receiver works its solution out of those that its
  /// constellations and masks let it use; with none, it reports `navigation` as it stands.
  std::vector<Satellite> sky;
  Track track;
  /// Seconds that pass for the receiver (its clock, surveys, the track) while one passes on the
  /// line; 0 stops its clock. What it sends, it sends at its update rate on the line.
  double clockRate = 1;
  StartTimes startTimes;

  unsigned int softResets = 0;  ///< message 0x01
  Bytes lastSoftReset;          ///< its body
  unsigned int restarts = 0;    ///< message 0x64/0x3F
  Bytes lastRestart;            ///< its body
  unsigned int factoryResets = 0;

  /// The timing mode that the receiver is in: a survey that has ended leaves it static.
  TimingMode runningTimingMode() const;
};

}  // namespace orb::sim
