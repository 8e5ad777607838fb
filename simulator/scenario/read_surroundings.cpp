#include <algorithm>
#include <array>
#include <cmath>

#include "scenario/readers.h"

namespace orb::sim {
namespace {

using namespace std::chrono_literals;

constexpr double kUnitsPerDegree = 1e7;
constexpr double kCentimetresPerMetre = 100;
constexpr double kLowest = -1000;    // metres above the ellipsoid
constexpr double kHighest = 50'000;  // metres

struct Numbering {
  Constellation constellation;
  std::int64_t satellites;  ///< the highest number
};

constexpr Word<Numbering> kConstellations[] = {
    {"gps", {Constellation::Gps, 32}},         {"glonass", {Constellation::Glonass, 28}},
    {"galileo", {Constellation::Galileo, 36}}, {"beidou", {Constellation::Beidou, 63}},
    {"qzss", {Constellation::Qzss, 10}},       {"sbas", {Constellation::Sbas, 32}},
};

constexpr std::int64_t kMostSatellites = 63;

constexpr Word<std::uint8_t> kFixModes[] = {
    {"none", 0}, {"2d", 1}, {"3d", 2}, {"3d-differential", 3}};

void readPosition(TableReader& position, Navigation& navigation) {
  double separation =
      (navigation.ellipsoidAltitude - navigation.meanSeaLevelAltitude) / kCentimetresPerMetre;
  position.scaled("latitude", navigation.latitude, kUnitsPerDegree, -90, 90);
  position.scaled("longitude", navigation.longitude, kUnitsPerDegree, -180, 180);
  position.scaled("altitude", navigation.ellipsoidAltitude, kCentimetresPerMetre, kLowest,
                  kHighest);
  position.number("geoid-separation", separation, -110, 90);
  navigation.meanSeaLevelAltitude =
      navigation.ellipsoidAltitude -
      static_cast<std::int32_t>(std::lround(separation * kCentimetresPerMetre));
}

/// A track says where the antenna is.
void refusePlace(TableReader& position) {
  for (const char* key : {"latitude", "longitude"}) {
    if (position.has(key)) {
      position.refuse(key,
                      "stands beside [track], which says where the antenna is; it has to be "
                      "left out");
    }
  }
}

/// A waypoint without an altitude is as high as the one before.
void readWaypoint(TableReader& waypoint, const Navigation& start,
                  std::vector<Waypoint>& waypoints) {
  Waypoint point;
  point.altitude = waypoints.empty() ? start.ellipsoidAltitude / kCentimetresPerMetre
                                     : waypoints.back().altitude;
  waypoint.require({"at", "latitude", "longitude"});
  waypoint.duration("at", point.at, 0s, 24h * 366);
  waypoint.number("latitude", point.latitude, -90, 90);
  waypoint.number("longitude", point.longitude, -180, 180);
  waypoint.number("altitude", point.altitude, kLowest, kHighest);
  if (!waypoints.empty() && waypoint.has("at") && point.at <= waypoints.back().at) {
    waypoint.refuse("at", "is not after the waypoint before; it has to be");
  }
  waypoints.push_back(point);
}

void readTrack(TableReader& file, State& state) {
  file.table("track", [&](TableReader& track) {
    track.flag("repeats", state.track.repeats);
    track.eachTable("waypoint", [&](TableReader& waypoint) {
      readWaypoint(waypoint, state.navigation, state.track.waypoints);
    });
    track.require({"waypoint"});
  });
}

void readSatellite(TableReader& table, std::vector<Satellite>& sky) {
  std::optional<Numbering> numbering;
  Satellite satellite;
  table.require({"constellation", "number"});
  table.word("constellation", numbering, kConstellations);
  const bool numbered = table.integer("number", satellite.number, 1,
                                      numbering ? numbering->satellites : kMostSatellites);
  table.number("elevation", satellite.elevation, 0, 90);
  table.number("azimuth", satellite.azimuth, 0, 360);
  table.integer("cnr", satellite.cnr, 0, 60);
  if (!numbering || !numbered) {
    return;
  }
  satellite.constellation = numbering->constellation;
  const bool twice = std::any_of(sky.begin(), sky.end(), [&](const Satellite& other) {
    return other.constellation == satellite.constellation && other.number == satellite.number;
  });
  if (twice) {
    table.refuse("number", "is " + std::to_string(satellite.number) +
                               ", like that of a satellite above; it has to be another one");
  }
  sky.push_back(satellite);
}

/// A solution that is given leaves nothing to work out: there is no sky then.
void readSolution(TableReader& solution, Navigation& navigation) {
  constexpr double kHundredths = 100;
  constexpr std::array kDilutions{"geometric-dop", "position-dop", "horizontal-dop", "vertical-dop",
                                  "time-dop"};
  solution.word("fix", navigation.fixMode, kFixModes);
  solution.integer("satellites", navigation.satellites, 0, 64);
  for (std::size_t i = 0; i < kDilutions.size(); ++i) {
    solution.scaled(kDilutions[i], navigation.dops[i], kHundredths, 0, 99.99);
  }
}

void readSky(TableReader& file, State& state) {
  if (file.has("satellite")) {
    state.sky.clear();
    file.eachTable("satellite", [&](TableReader& table) { readSatellite(table, state.sky); });
  }
  if (file.has("solution")) {
    if (file.has("satellite")) {
      file.refuse("solution", "stands beside [[satellite]]; one of them has to be left out");
    }
    state.sky.clear();
    file.table("solution", [&](TableReader& table) { readSolution(table, state.navigation); });
  }
}

}  // namespace

void readSurroundings(TableReader& file, State& state) {
  file.table("position", [&](TableReader& table) {
    readPosition(table, state.navigation);
    if (file.has("track")) {
      refusePlace(table);
    }
  });
  readTrack(file, state);
  readSky(file, state);
}

}  // namespace orb::sim
