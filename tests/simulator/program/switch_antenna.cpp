// Switches the antenna's supply through the library: switch_antenna STATE... Exits with the last
// result.

#include "orb-gnss/orb-gnss.h"

int main(int count, char** arguments) {
  int result = 0;
  BrdOrbChipInterface board;
  for (int i = 1; i < count; ++i) {
    result = board.antennaPowerEnable(arguments[i]);
  }
  return result;
}
