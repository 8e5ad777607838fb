#include "model/nmea_satellites.h"

#include <algorithm>
#include <cmath>

#include "model/nmea_format.h"
#include "model/satellites.h"

namespace orb::sim {
namespace {

/// How sentences name a constellation and number its satellites, so that no number stands for two.
struct Naming {
  Constellation constellation;
  const char* talker;
  int offset;  ///< of the satellites' numbers
};

constexpr Naming kNamings[] = {
    {Constellation::Gps, "GP", 0},       {Constellation::Sbas, "GP", 32},
    {Constellation::Glonass, "GL", 64},  {Constellation::Qzss, "GQ", 192},
    {Constellation::Galileo, "GA", 300}, {Constellation::Beidou, "GB", 200},
};

std::vector<Satellite> only(Constellation constellation, const std::vector<Satellite>& all) {
  std::vector<Satellite> members;
  std::copy_if(
      all.begin(), all.end(), std::back_inserter(members),
      [&](const Satellite& satellite) { return satellite.constellation == constellation; });
  return members;
}

/// Calls `use` with the satellites from `first` to before `last`, so many at a time.
template <typename Use>
void inGroups(const std::vector<Satellite>& satellites, std::size_t size, Use use) {
  for (std::size_t first = 0; first < satellites.size(); first += size) {
    const std::size_t last = std::min(first + size, satellites.size());
    use(std::vector<Satellite>(satellites.begin() + static_cast<std::ptrdiff_t>(first),
                               satellites.begin() + static_cast<std::ptrdiff_t>(last)));
  }
}

std::string gsaSentence(const Navigation& navigation, const std::string& talker,
                        const std::vector<Satellite>& satellites, int offset) {
  constexpr std::size_t kPlaces = 12;
  constexpr std::uint8_t kLongestMode = 2;  // differential fixes are 3D fixes here
  std::string fields = talker + format("GSA,A,%d", 1 + std::min(navigation.fixMode, kLongestMode));
  for (std::size_t place = 0; place < kPlaces; ++place) {
    fields += ",";
    fields += place < satellites.size() ? format("%02d", offset + satellites[place].number) : "";
  }
  const auto& dops = navigation.dops;
  return nmeaSentence(fields +
                      format(",%.1f,%.1f,%.1f", dops[1] / 100.0, dops[2] / 100.0, dops[3] / 100.0));
}

std::string gsvEntry(const Satellite& satellite, int offset) {
  const int azimuth = static_cast<int>(std::lround(satellite.azimuth)) % 360;
  const std::string place =
      format(",%02d,%02d,%03d,", offset + satellite.number,
             static_cast<int>(std::lround(satellite.elevation)), (azimuth + 360) % 360);
  return place + (satellite.cnr == 0 ? "" : format("%02d", satellite.cnr));
}

}  // namespace

std::string gsaSentences(const Solution& solution, const std::string& talker) {
  constexpr std::size_t kSatellitesOfASentence = 12;
  std::string sentences;
  for (const Naming& naming : kNamings) {
    inGroups(only(naming.constellation, solution.used), kSatellitesOfASentence,
             [&](const std::vector<Satellite>& group) {
               sentences += gsaSentence(solution.navigation, talker, group, naming.offset);
             });
  }
  return sentences.empty() ? gsaSentence(solution.navigation, talker, {}, 0) : sentences;
}

std::string gsvSentences(const State& state) {
  constexpr std::size_t kSatellitesOfASentence = 4;
  const std::vector<Satellite> inView = satellitesInView(state);
  std::string sentences;
  for (const Naming& naming : kNamings) {
    const std::vector<Satellite> members = only(naming.constellation, inView);
    const std::size_t count = (members.size() + 3) / kSatellitesOfASentence;
    std::size_t number = 0;
    inGroups(members, kSatellitesOfASentence, [&](const std::vector<Satellite>& group) {
      std::string fields =
          naming.talker + format("GSV,%zu,%zu,%02zu", count, ++number, members.size());
      for (const Satellite& satellite : group) {
        fields += gsvEntry(satellite, naming.offset);
      }
      sentences += nmeaSentence(fields);
    });
  }
  return sentences.empty() ? nmeaSentence("GPGSV,1,1,00") : sentences;
}

}  // namespace orb::sim
