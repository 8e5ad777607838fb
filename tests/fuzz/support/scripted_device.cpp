#include "support/scripted_device.h"

#include <cstdio>
#include <iostream>
#include <streambuf>

#include "support/check.h"

namespace orb::test {

namespace {

/// Takes everything and keeps nothing.
class NowhereBuffer : public std::streambuf {
  int_type overflow(int_type character) override { return traits_type::not_eof(character); }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

}  // namespace

ScriptedDevice::ScriptedDevice(const std::vector<Piece>& script) {
  calls_.settingsFound = termios{};
  calls_.settingResult = 0;
  calls_.syncResult = 0;
  for (const Piece& piece : script) {
    line_.deliver(piece.bytes, piece.secondsBefore);
  }
  line_.endInTimeOut();
}

ScriptedDevice::~ScriptedDevice() { check(!calls_.isOpen(), "the device is closed"); }

}  // namespace orb::test

// Called once, before the first input.
extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  static orb::test::NowhereBuffer nowhere;
  std::cout.rdbuf(&nowhere);
  std::cerr.rdbuf(&nowhere);
  orb::test::check(std::freopen("/dev/null", "w", stdout) != nullptr, "/dev/null can be opened");
  return 0;
}
