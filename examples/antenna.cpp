// Switches the antenna's supply off and on, and sees by the satellites whether that worked: the
// call's own 0 does not tell.

#include <orb-gnss/orb-gnss.h>

#include <chrono>
#include <iostream>
#include <string>
#include <thread>

constexpr int kTries = 30;  // seconds

bool waitForSatellites(orbController& receiver, bool wanted) {
  for (int i = 0; i < kTries; ++i) {
    unsigned char count = 0;  // it stays as it is where no answer comes
    if (receiver.getNofSatellitesInNavSol(count) == 0 && (count > 0) == wanted) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::seconds(1));
  }
  return false;
}

int main() {
  orbController receiver;
  if (!receiver.IsOrbitek()) {
    std::cerr << "no receiver\n";
    return 1;
  }
  // The number of satellites is told in the binary output alone.
  if (const unsigned int result = receiver.gpsObtSetMsgType("BINARY"); result != 0) {
    std::cerr << "the output was not switched: result " << result << '\n';
    return 1;
  }
  for (const std::string state : {"OFF", "ON"}) {
    if (receiver.setAntennaPower(state) != 0 || !waitForSatellites(receiver, state == "ON")) {
      std::cerr << "the supply does not go " << state << '\n';
      return 1;
    }
    std::cout << "antenna " << state << '\n';
  }
  receiver.gpsObtSetMsgType("NMEA");
}
