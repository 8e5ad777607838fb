// Prints what a receiver sends in ten seconds: print_nmea CASE

#include <iostream>
#include <map>
#include <string>

#include "orb-sim/receiver.h"

namespace orb::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

sim::State withoutSky() { return {}; }

sim::State standing() {
  sim::State state;
  state.sky = sim::ordinarySky();
  state.constellations = 0x0F;
  return state;
}

sim::State gpsOnly() {
  sim::State state = standing();
  state.constellations = 0x01;
  state.sbas[0] = 0;
  state.qzss[0] = 0;
  return state;
}

/// Northwards and upwards, south of the equator and west of Greenwich.
sim::State moving() {
  sim::State state = standing();
  state.track.waypoints = {{seconds(0), -33.0, -70.5, 600}, {seconds(100), -32.99, -70.5, 700}};
  return state;
}

sim::State cold() {
  sim::State state = standing();
  state.startup = {milliseconds(0), seconds(5), false, true};
  return state;
}

sim::State fast() {
  sim::State state = standing();
  state.updateRate = 5;
  state.nmeaIntervals = {1, 5, 10, 0, 1, 0, 5};
  return state;
}

const std::map<std::string, sim::State (*)()> kCases{
    {"standing", standing}, {"gps-only", gpsOnly}, {"moving", moving},
    {"cold", cold},         {"fast", fast},        {"without-sky", withoutSky}};

std::string outputOfTenSeconds(const sim::State& state) {
  sim::Receiver receiver(state);
  receiver.talkFromTheStart();
  const sim::Bytes output = receiver.tick(seconds(10));
  return {output.begin(), output.end()};
}

}  // namespace
}  // namespace orb::test

int main(int argc, char** argv) {
  using orb::test::kCases;
  const auto found = kCases.find(argc == 2 ? argv[1] : "");
  if (found == kCases.end()) {
    std::cerr << "usage: print_nmea CASE\n";
    return 2;
  }
  std::cout << orb::test::outputOfTenSeconds(found->second());
}
