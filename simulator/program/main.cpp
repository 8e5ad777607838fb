#include <exception>

#include "program/command_line.h"
#include "program/failure.h"
#include "program/standard_streams.h"

int main(int argc, char** argv) {
  try {
    orb::sim::occupyClosedStreams();
    return orb::sim::execute(argc, argv);
  } catch (const std::exception& error) {
    return orb::sim::report(error);
  }
}
