#include "model/nmea_satellites.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
#include <string_view>

#include "model/nmea_format.h"
#include "model/satellites.h"

namespace orb::sim {
namespace {

// As many as one sentence has room for.
constexpr std::size_t kSatellitesOfGsa = 12;
constexpr std::size_t kSatellitesOfGsv = 4;

/// How sentences name a constellation and number its satellites, so that no number stands for two.
struct Naming {
  Constellation constellation;
  std::string_view talker;
  int offset;  ///< of the satellites' numbers
};

constexpr Naming kNamings[] = {
    {Constellation::Gps, "GP", 0},       {Constellation::Sbas, "GP", 32},
    {Constellation::Glonass, "GL", 64},  {Constellation::Qzss, "GQ", 192},
    {Constellation::Galileo, "GA", 300}, {Constellation::Beidou, "GB", 400},
};

constexpr std::string_view kTalkers[] = {"GP", "GL", "GQ", "GA", "GB"};

std::vector<Satellite> only(Constellation constellation, const std::vector<Satellite>& all) {
  std::vector<Satellite> members;
  std::ranges::copy_if(all, std::back_inserter(members), [&](const Satellite& satellite) {
    return satellite.constellation == constellation;
  });
  return members;
}

/// Calls `use` with the items, at most `size` at a time.
template <typename Item, typename Use>
void inGroups(const std::vector<Item>& items, std::size_t size, Use use) {
  for (std::size_t first = 0; first < items.size(); first += size) {
    const std::size_t last = std::min(first + size, items.size());
    use(std::vector<Item>(items.begin() + static_cast<std::ptrdiff_t>(first),
                          items.begin() + static_cast<std::ptrdiff_t>(last)));
  }
}

std::string gsaSentence(const Navigation& navigation, const std::string& talker,
                        const std::vector<Satellite>& satellites, int offset) {
  // A differential fix is a 3D fix here.
  const int dimensions = 1 + std::min(navigation.fixMode, std::uint8_t{kFixIn3d});
  std::string fields = talker + format("GSA,A,%d", dimensions);
  for (std::size_t place = 0; place < kSatellitesOfGsa; ++place) {
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

/// The entries of all satellites that a talker speaks for.
std::vector<std::string> gsvEntries(const std::vector<Satellite>& inView, std::string_view talker) {
  std::vector<std::string> entries;
  for (const Naming& naming : kNamings) {
    if (naming.talker == talker) {
      for (const Satellite& satellite : only(naming.constellation, inView)) {
        entries.push_back(gsvEntry(satellite, naming.offset));
      }
    }
  }
  return entries;
}

}  // namespace

std::string gsaSentences(const Solution& solution, const std::string& talker) {
  std::string sentences;
  for (const Naming& naming : kNamings) {
    inGroups(only(naming.constellation, solution.used), kSatellitesOfGsa,
             [&](const std::vector<Satellite>& group) {
               sentences += gsaSentence(solution.navigation, talker, group, naming.offset);
             });
  }
  return sentences.empty() ? gsaSentence(solution.navigation, talker, {}, 0) : sentences;
}

std::string gsvSentences(const State& state) {
  const std::vector<Satellite> inView = satellitesInView(state);
  std::string sentences;
  for (const std::string_view talker : kTalkers) {
    const std::vector<std::string> entries = gsvEntries(inView, talker);
    const std::size_t count = (entries.size() + kSatellitesOfGsv - 1) / kSatellitesOfGsv;
    std::size_t number = 0;
    inGroups(entries, kSatellitesOfGsv, [&](const std::vector<std::string>& group) {
      const std::string head =
          std::string(talker) + format("GSV,%zu,%zu,%02zu", count, ++number, entries.size());
      sentences += nmeaSentence(std::accumulate(group.begin(), group.end(), head));
    });
  }
  return sentences.empty() ? nmeaSentence("GPGSV,1,1,00") : sentences;
}

}  // namespace orb::sim
