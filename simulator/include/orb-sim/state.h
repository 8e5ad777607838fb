#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "orb-sim/bytes.h"
#include "orb-sim/settings.h"
#include "orb-sim/sky.h"
#include "orb-sim/track.h"

namespace orb::sim {

/// A version X.Y.Z.
struct Version {
  std::uint8_t x = 0;  ///< first number
  std::uint8_t y = 0;  ///< second number
  std::uint8_t z = 0;  ///< third number
};

/// What the receiver says of itself.
struct Identity {
  Version kernel{1, 0, 12};                  ///< of the kernel
  Version odm{1, 2, 0};                      ///< of the ODM
  std::uint8_t revisionYear = 24;            ///< two digits
  std::uint8_t revisionMonth = 3;            ///< 1 to 12
  std::uint8_t revisionDay = 15;             ///< 1 to 31
  std::string versionExtension = "ORB-SIM";  ///< at most 32 bytes are reported
};

/// Where the antenna is, and how good a fix is where no sky decides that (see State::sky).
struct Navigation {
  std::uint8_t fixMode = 2;            ///< 0 none, 1 2D, 2 3D, 3 3D with differential corrections
  std::uint8_t satellites = 9;         ///< in the fix
  std::int32_t latitude = 483712345;   ///< 1e-7 degree
  std::int32_t longitude = 115678901;  ///< 1e-7 degree
  std::int32_t ellipsoidAltitude = 52012;     ///< centimetres
  std::int32_t meanSeaLevelAltitude = 47590;  ///< centimetres
  /// Geometric, position, horizontal, vertical and time dilution of precision, in hundredths.
  std::array<std::uint16_t, 5> dops{180, 160, 90, 130, 85};
};

/// The receiver's clock.
struct GpsTime {
  std::uint16_t week = 2300;                        ///< since 1980-01-06
  std::chrono::milliseconds timeOfWeek{345678000};  ///< since the start of the week
  std::uint8_t leapSeconds = 18;                    ///< from UTC to GPS time
  std::uint8_t valid = 7;  ///< one bit each: time of week, week, leap seconds
  /// The midnight in UTC that follows a second 23:59:60 to come. Once that is over, there is one
  /// more of the leap seconds, and none is to come.
  std::optional<std::chrono::time_point<std::chrono::system_clock, std::chrono::milliseconds>>
      leapSecond{};
};

/// What changes around the receiver at a certain time. What has no value stays as it is.
struct TimedEvent {
  std::chrono::milliseconds at{0};  ///< since the receiver was constructed, on the line's clock
  std::optional<bool> signals{};    ///< see State::signals
  std::optional<std::uint8_t> interferenceStatus{};  ///< see State::interferenceStatus
  std::optional<double> clockRate{};                 ///< see State::clockRate
  std::chrono::milliseconds jump{0};                 ///< of the receiver's clock
};

/// How long the receiver takes after a restart, on the line's clock.
struct StartTimes {
  std::chrono::milliseconds silence{0};   ///< until it hears and says anything
  std::chrono::milliseconds cold{35000};  ///< until it has a fix, knowing nothing
  std::chrono::milliseconds warm{28000};  ///< until it has a fix, knowing time and place roughly
  std::chrono::milliseconds hot{1000};    ///< until it has a fix, knowing the satellites
};

/// How far the receiver has come since it last started. As constructed, it is long since up.
struct Startup {
  std::chrono::milliseconds silence{0};   ///< left until it hears and says anything
  std::chrono::milliseconds untilFix{0};  ///< left until it has found the satellites
  bool hasHadFix = true;                  ///< since it started
  bool cold = false;                      ///< until the first fix it knows neither time nor place
};

/// The pulses at the 1PPS output.
struct Pulses {
  std::uint32_t width = 0;  ///< microseconds
  /// Nanoseconds from the second of GPS time to the rising edge: later by the offset of UTC where
  /// they are aligned to it, earlier by the cable delay.
  double offset = 0;
};

/// Everything that a receiver knows: its settings, what it measures, and what happened to it.
struct State : Settings {
  Identity identity;      ///< what it says of itself
  Navigation navigation;  ///< where the antenna is
  GpsTime time;           ///< its clock
  /// Nanoseconds from the second of GPS time to that of UTC, leap seconds aside. Aligned to UTC
  /// (see PpsOutput), the receiver's clock and its pulses tick so much later.
  std::uint32_t utcOffset = 7;
  /// What its interference detection finds: 0 unknown, 1 none, 2 some, 3 critical. Interference
  /// weakens every satellite, by 6 or by 20 dB-Hz.
  std::uint8_t interferenceStatus = 1;
  /// Whether the signals of satellites reach the antenna. Without them there is no fix, and the
  /// receiver's clock runs on.
  bool signals = true;
  bool antennaSupply = true;              ///< without it, there are no signals
  std::chrono::milliseconds surveyed{0};  ///< since the survey began, while it had a fix

  /// The satellites in view. With some, the receiver works its solution out of those that its
  /// constellations and masks let it use; with none, it reports `navigation` as it stands.
  std::vector<Satellite> sky;
  Track track;  ///< the antenna's way
  /// Seconds that pass for the receiver (its clock, surveys, the track) while one passes on the
  /// line; 0 stops its clock. What it sends, it sends at its update rate on the line, unless its
  /// clock merely drifts (0.99 to 1.01): then at whole seconds of its own, and fractions of them.
  double clockRate = 1;
  std::chrono::milliseconds outputDelay{0};   ///< from an epoch to its output, on the line's clock
  std::chrono::milliseconds outputJitter{0};  ///< up to so much is added to it
  std::uint64_t seed = 0;                     ///< the jitter is drawn from it
  std::chrono::milliseconds sinceBeginning{0};  ///< of the simulation, by the receiver's clock
  StartTimes startTimes;                        ///< how long starts take
  Startup startup;                              ///< how far the last one has come
  std::vector<TimedEvent> timeline;  ///< in order of time; what has happened is no longer in it

  unsigned int softResets = 0;     ///< message 0x01
  Bytes lastSoftReset;             ///< its body
  unsigned int restarts = 0;       ///< message 0x64/0x3F
  Bytes lastRestart;               ///< its body
  unsigned int factoryResets = 0;  ///< message 0x04

  /// The timing mode that the receiver is in: a survey that has ended leaves it static.
  TimingMode runningTimingMode() const;

  /// What the receiver reports at this moment: its fix, its place, the dilution of precision.
  Navigation solution() const;

  /// The satellites that this solution is worked out of; none where `sky` is empty.
  std::vector<Satellite> satellitesUsed() const;

  /// What comes out of its 1PPS output; nothing where its mode holds the pulses back.
  std::optional<Pulses> pulses() const;
};

}  // namespace orb::sim
