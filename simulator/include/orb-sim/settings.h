#pragma once

#include <array>
#include <cstdint>
#include <map>

namespace orb::sim {

/// What the receiver sends of its own accord. Any other value is kept as set and sends nothing.
enum class OutputType : std::uint8_t { None = 0, Nmea = 1, Binary = 2 };

/// Any other value is kept as set and navigates like Dynamic.
enum class TimingMode : std::uint8_t { Dynamic = 0, AutoSurvey = 1, Static = 2 };

// The members of a setting that has several stand in the order of its message.

/// A serial port of the receiver.
struct SerialPort {
  std::uint8_t port = 0;      ///< its number
  std::uint8_t baudCode = 5;  ///< place in kSerialSpeeds
};

/// In baud.
inline constexpr unsigned int kSerialSpeeds[] = {4800, 9600, 19200, 38400, 57600, 115200};

/// No fix where a dilution of precision is above its limit.
struct DopMask {
  std::uint8_t mode = 0;  ///< 0: the mask is off
  /// In tenths: of the position, the horizontal and the geometric dilution of precision.
  std::array<std::uint16_t, 3> limits{300, 300, 300};
};

/// Satellites that are lower or weaker are not used.
struct ElevationCnrMask {
  std::uint8_t mode = 1;       ///< 0: the mask is off
  std::uint8_t elevation = 5;  ///< degrees
  std::uint8_t cnr = 0;        ///< dB-Hz
};

/// What a fix has to be: 0 asks for a 3D fix, 1 lets a 2D fix pass.
struct FixNavMask {
  std::uint8_t first = 0;   ///< the first fix after a start
  std::uint8_t second = 0;  ///< every later one
};

/// The timing configuration: whether there is a survey, and the place that is held.
struct Timing {
  TimingMode mode = TimingMode::Dynamic;  ///< as last set; see State::runningTimingMode()
  std::uint32_t surveyLength = 2000;      ///< seconds
  // A survey puts here what it has found so far.
  std::uint32_t standardDeviation = 30;  ///< of the position, in centimetres
  double latitude = 0;                   ///< degrees
  double longitude = 0;                  ///< degrees
  float altitude = 0;                    ///< metres above the ellipsoid
};

/// The 1PPS output.
struct PpsOutput {
  /// When there are pulses: 0 always, 1 with a fix, 2 with at least one satellite; any other value
  /// is taken for 0.
  std::uint8_t mode = 0;
  std::uint8_t alignSource = 0;  ///< 0 GNSS time, 1 UTC
};

/// Every setting that a command can change, as last set. The default values are the factory's.
struct Settings {
  SerialPort serialPort;                     ///< the last that was set up
  OutputType outputType = OutputType::Nmea;  ///< what it sends of its own accord
  std::uint8_t powerMode = 0;         ///< 0 normal, 1 power saving: one epoch a second at most
  std::uint8_t updateRate = 1;        ///< in Hz; 0 sends nothing
  DopMask dopMask;                    ///< limits of the dilution of precision
  ElevationCnrMask elevationCnrMask;  ///< low and weak satellites
  std::int32_t cableDelay = 0;        ///< hundredths of a nanosecond
  Timing timing;                      ///< survey or place
  PpsOutput ppsOutput;                ///< mode and alignment
  std::array<std::uint8_t, 6> sbas{1, 1, 8, 1, 3, 7};  ///< first byte: enabled
  std::array<std::uint8_t, 2> qzss{1, 3};              ///< first byte: enabled
  /// Epochs between two sentences of a kind; 0: never. GGA, GSA, GSV, GLL, RMC, VTG, ZDA, ...
  std::array<std::uint8_t, 12> nmeaIntervals{1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0};
  std::uint8_t interferenceDetection = 0;  ///< 0 off, 1 on
  FixNavMask fixNavMask;                   ///< what a fix has to be
  std::uint8_t navigationMode = 0;         ///< 0 to 5; changes nothing else
  std::uint16_t constellations = 0x0003;   ///< bits: 0 GPS, 1 GLONASS, 2 Galileo, 3 BeiDou
  std::uint8_t navMessageInterval = 1;     ///< epochs between two navigation messages; 0: never
  std::uint8_t secondBand = 0;             ///< 0 off, 1 on; changes nothing else
  std::uint32_t ppsPulseWidth = 1000;      ///< microseconds
  std::uint32_t pps2Frequency = 0;         ///< Hz

  /// The attribute byte that came with each setting, by message; nothing for one never set.
  std::map<std::uint16_t, std::uint8_t> attributes;
};

}  // namespace orb::sim
