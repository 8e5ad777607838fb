// Sets up the 1PPS output: cable delay, pulse width, aligned to UTC, pulses only with a fix.

#include <orb-gnss/orb-gnss.h>

#include <iostream>

constexpr int kCableDelay = 28;         // nanoseconds
constexpr unsigned int kWidth = 10000;  // microseconds
constexpr unsigned int kWithAFix = 1;
constexpr unsigned int kUtc = 1;

// A setting is read back, so that 0 means: the receiver holds it.
bool isSet(const char* what, unsigned int result) {
  if (result != 0) {
    std::cerr << what << " failed: result " << result << '\n';
  }
  return result == 0;
}

int main() {
  if (!orbController().IsOrbitek()) {
    std::cerr << "no receiver\n";
    return 1;
  }
  orbController_QN4470T01 driver;  // has the commands that orbController does not offer
  const bool all = isSet("the cable delay", driver.setAntennaDelay(kCableDelay)) &
                   isSet("the pulse width", driver.gpsObtTimePulseConfigure(kWidth)) &
                   isSet("the output mode", driver.gpsOrb1ppsOutputMode(kWithAFix, kUtc));
  return all ? 0 : 1;
}
