// Tells, for as long as it runs, whether the receiver has a fix: one line for each change. No call
// takes much longer than its deadline, so an unplugged receiver is a line too, and SIGTERM ends it.

#include <orb-gnss/supervised_controller.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

std::atomic<bool> goesOn = true;

std::string failure(unsigned int result) {
  const std::string& problem = orbSupervisedController::lastCall().problem;
  return "no answer: " + (problem.empty() ? "result " + std::to_string(result) : problem);
}

// What there is to say now; the first failure ends the questions.
std::string status(orbSupervisedController& receiver) {
  std::string info;
  if (const unsigned int result = receiver.getInfo(info); result != 0) {
    return failure(result);
  }
  if (info.empty()) {  // without a receiver every call succeeds and does nothing: look again
    std::vector<orbSupervisedController::Value> device = {std::string("/dev/tty_gps")};
    receiver.call("CreateOrbitek", device);
    return "no receiver";
  }
  // The position is told in the binary output alone, which a receiver forgets when it restarts.
  std::string solution;
  unsigned int result = receiver.gpsObtSetMsgType("BINARY");
  if (result == 0) {
    result = receiver.getNavsolution("", solution);
  }
  return result == 0 ? solution.substr(0, solution.find('\n')) : failure(result);  // "fix mode=3D"
}

int main() {
  std::signal(SIGTERM, [](int) { goesOn = false; });
  orbSupervisedController receiver(std::chrono::seconds(3));
  std::string before;
  while (goesOn) {
    if (const std::string now = status(receiver); now != before) {
      std::cout << now << std::endl;  // at once, also into a pipe
      before = now;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
  }
}
