#include "orb-sim/sky.h"

namespace orb::sim {

std::vector<Satellite> ordinarySky() {
  using C = Constellation;
  return {
      // number, elevation, azimuth, carrier-to-noise ratio
      {C::Gps, 2, 71, 285, 48},      {C::Gps, 5, 52, 62, 46},       {C::Gps, 7, 33, 191, 42},
      {C::Gps, 13, 24, 118, 39},     {C::Gps, 20, 41, 318, 44},     {C::Gps, 29, 15, 243, 35},
      {C::Gps, 30, 7, 27, 29},       {C::Gps, 15, 3, 156, 22},      {C::Glonass, 1, 58, 144, 45},
      {C::Glonass, 8, 36, 47, 41},   {C::Glonass, 11, 19, 302, 36}, {C::Glonass, 23, 8, 211, 17},
      {C::Galileo, 3, 64, 215, 47},  {C::Galileo, 8, 39, 88, 42},   {C::Galileo, 13, 27, 337, 38},
      {C::Galileo, 25, 12, 160, 31}, {C::Beidou, 19, 55, 12, 45},   {C::Beidou, 21, 31, 262, 40},
      {C::Beidou, 34, 22, 99, 37},   {C::Beidou, 36, 6, 184, 26},   {C::Qzss, 2, 4, 52, 19},
      {C::Sbas, 3, 32, 160, 40},     {C::Sbas, 17, 29, 206, 38},
  };
}

}  // namespace orb::sim
