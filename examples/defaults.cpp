// Applies the configuration of a timing receiver and reads it back.

#include <orb-gnss/orb-gnss.h>

#include <iostream>
#include <string>

int main() {
  orbController receiver;
  if (!receiver.IsOrbitek()) {
    std::cerr << "no receiver\n";
    return 1;
  }
  // Seven steps, each tried whatever became of the others: the result is the sum of their troubles.
  if (const unsigned int result = receiver.setDefaultConfiguration(); result != 0) {
    std::cerr << "not all was set: result " << result << ", see /var/log/orbset-errors.log\n";
  }

  int delay = 0;
  unsigned char elevation = 0;
  signed char cnr = 0;
  std::string survey;
  const unsigned int result = receiver.getAntennaDelay(delay) |
                              receiver.getElevationLimit(elevation) | receiver.getMinCNo(cnr) |
                              receiver.getSurveyMode(survey);
  if (result != 0) {
    std::cerr << "not all was read: result " << result << '\n';
    return 1;
  }
  std::cout << "cable delay " << delay << " ns, elevation mask " << int{elevation}
            << " degrees, CNR mask " << int{cnr} << " dB-Hz, survey " << survey << '\n';
}
