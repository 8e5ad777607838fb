#include <exception>
#include <iostream>

#include "orbctl/command_line.h"
#include "orbctl/failure.h"

int main(int argc, char** argv) {
  try {
    return orb::ctl::execute(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "orbctl: " << error.what() << '\n';
    return static_cast<int>(orb::ctl::ExitStatus::Other);
  }
}
