// Asks the receiver for its firmware, and is not held up by a line that carries nothing.

#include <chrono>
#include <iostream>
#include <string>

#include "orb-gnss/supervised_controller.h"

int main() {
  orbSupervisedController receiver(std::chrono::seconds(2));
  std::string info;
  if (receiver.getInfo(info) != 0) {
    std::cout << orbSupervisedController::lastCall().problem << '\n';
    return 1;
  }
  std::cout << (info.empty() ? "no receiver" : info) << '\n';
}
