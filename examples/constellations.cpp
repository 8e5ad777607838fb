// Uses GPS and GALILEO, with SBAS, and tells what the receiver then uses.

#include <orb-gnss/orb-gnss.h>

#include <iostream>

constexpr unsigned short kGps = 0x01;  // 1 << index in gnssNames
constexpr unsigned short kGalileo = 0x04;
constexpr int kNames = 7;

int main() {
  orbController receiver;
  if (!receiver.IsOrbitek()) {
    std::cerr << "no receiver\n";
    return 1;
  }
  // Setting the constellations switches SBAS and QZSS off, so SBAS comes after it.
  unsigned int result = receiver.setGnssSystem(kGps | kGalileo);
  orbController_QN4470T01 driver;
  result |= driver.gpsObtSbasConfigure(true);

  unsigned short mask = 0;  // the query adds to it
  bool sbas = false;
  result |= receiver.getGnssSystem(mask);
  result |= driver.gpsObtGetSbasConfigure(sbas);
  if (result != 0) {
    std::cerr << "failed: result " << result << '\n';
    return 1;
  }
  for (int id = 0; id < kNames; ++id) {
    if ((mask & (1U << id)) != 0) {
      std::cout << gnssNames[id] << ' ';
    }
  }
  std::cout << (sbas ? "with SBAS\n" : "without SBAS\n");
}
