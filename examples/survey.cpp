// Surveys the antenna's position for so many seconds, waits for the end, and prints the position.
//   survey SECONDS

#include <orb-gnss/orb-gnss.h>

#include <chrono>
#include <iostream>
#include <string>
#include <thread>

struct Place {
  double latitude = 0;
  double longitude = 0;
  double altitude = 0;
  bool operator==(const Place& other) const {
    return latitude == other.latitude && longitude == other.longitude && altitude == other.altitude;
  }
};

// What the receiver has found so far; false where no answer came.
bool read(orbController& receiver, Place& place) {
  unsigned char mode = 0;
  double reserved = 0;
  unsigned int length = 0;
  float deviation = 0;
  return receiver.getSurveyInfo(mode, place.latitude, place.longitude, place.altitude, reserved,
                                length, deviation) == 0;
}

int main(int argc, char** argv) {
  const auto seconds = static_cast<unsigned int>(argc == 2 ? std::stoul(argv[1]) : 7200);
  orbController receiver;
  if (!receiver.IsOrbitek()) {
    std::cerr << "no receiver\n";
    return 1;
  }
  // The second argument is checked and not sent: the survey ends after its length.
  if (const unsigned int result = receiver.setSurveyAuto(seconds, 1); result != 0) {
    std::cerr << "the survey was not begun: result " << result << '\n';
    return 1;
  }

  // The mode stays "AUTO" when the survey is over; the place stays the same then. Without a fix the
  // survey stands still, so it can take longer than its length.
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  Place before;
  for (unsigned int waited = 0; waited < seconds + 60; waited += 2) {
    if (Place place; read(receiver, place)) {
      if (place == before) {
        std::cout.precision(4);
        std::cout << std::fixed << "surveyed: " << place.latitude << ' ' << place.longitude << '\n';
        return 0;
      }
      before = place;
    }
    std::this_thread::sleep_for(std::chrono::seconds(2));
  }
  std::cerr << "the survey has not ended\n";
  return 1;
}
