// Finds this device's GNSS receiver and says what it is.

#include <orb-gnss/orb-gnss.h>

#include <fstream>
#include <iostream>
#include <string>

int main() {
  orbController receiver;
  receiver.saveorbitekChipInfo();
  std::cout << "identity file:\n" << std::ifstream("/tmp/orbitekChip-info.txt").rdbuf();
  if (!receiver.IsOrbitek()) {
    std::cout << "no receiver\n";
    return 1;
  }

  std::string info;
  const unsigned int failures = receiver.getInfo(info);
  if (failures != 0) {
    std::cout << "the receiver did not tell its version: result " << failures << '\n';
    return 1;
  }
  std::cout << "receiver: " << info << '\n';
}
