#include <exception>

#include "program/command_line.h"
#include "program/failure.h"

int main(int argc, char** argv) {
  try {
    return orb::sim::execute(argc, argv);
  } catch (const std::exception& error) {
    return orb::sim::report(error);
  }
}
