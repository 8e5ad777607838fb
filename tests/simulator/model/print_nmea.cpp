// Prints what a receiver sends in ten seconds: print_nmea CASE

#include <iostream>
#include <map>
#include <string>

#include "orb-sim/receiver.h"

namespace orb::sim::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

State withoutSky() { return {}; }

State standing() {
  State state;
  state.sky = ordinarySky();
  state.constellations = 0x0F;
  return state;
}

State gpsOnly() {
  State state = standing();
  state.constellations = 0x01;
  state.sbas[0] = 0;
  state.qzss[0] = 0;
  return state;
}

/// Northwards and upwards, south of the equator and west of Greenwich.
State moving() {
  State state = standing();
  state.track.waypoints = {{seconds(0), -33.0, -70.5, 600}, {seconds(100), -32.99, -70.5, 700}};
  return state;
}

State cold() {
  State state = standing();
  state.startup = {milliseconds(0), seconds(5), false, true};
  return state;
}

State fast() {
  State state = standing();
  state.updateRate = 5;
  state.nmeaIntervals = {1, 5, 10, 0, 1, 0, 5};
  return state;
}

const std::map<std::string, State (*)()> kCases{
    {"standing", standing}, {"gps-only", gpsOnly}, {"moving", moving},
    {"cold", cold},         {"fast", fast},        {"without-sky", withoutSky}};

std::string outputOfTenSeconds(const State& state) {
  Receiver receiver(state);
  receiver.talkFromTheStart();
  const Bytes output = receiver.tick(seconds(10));
  return {output.begin(), output.end()};
}

}  // namespace
}  // namespace orb::sim::test

int main(int argc, char** argv) {
  using orb::sim::test::kCases;
  const auto found = kCases.find(argc == 2 ? argv[1] : "");
  if (found == kCases.end()) {
    std::cerr << "usage: print_nmea CASE\n";
    return 2;
  }
  std::cout << orb::sim::test::outputOfTenSeconds(found->second());
}
