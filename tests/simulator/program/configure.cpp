// Configures the receiver by the library's operations, and prints each result and what was read
// back: the same text each time that the receiver says the same.

#include <orb-gnss/orb-gnss.h>

#include <iostream>
#include <string>

namespace {

void changeMask(orbController& receiver, signed char mask) {
  signed char read = 0;
  const unsigned int set = receiver.setMinCNo(mask);
  const unsigned int got = receiver.getMinCNo(read);
  std::cout << "CNR mask: " << set << ' ' << got << ' ' << static_cast<int>(read) << '\n';
}

}  // namespace

int main() {
  orbController receiver;
  std::cout << "receiver: " << receiver.IsOrbitek() << '\n';

  std::string info;
  const unsigned int told = receiver.getInfo(info);
  std::cout << "info: " << told << ' ' << info << '\n';

  changeMask(receiver, 20);
  changeMask(receiver, 35);
  changeMask(receiver, 20);

  int delay = 0;
  const unsigned int delayed = receiver.setAntennaDelay(28);
  const unsigned int readBack = receiver.getAntennaDelay(delay);
  std::cout << "delay: " << delayed << ' ' << readBack << ' ' << delay << '\n';
}
