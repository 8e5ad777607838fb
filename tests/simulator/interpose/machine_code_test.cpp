#include "interpose/machine_code.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace {

namespace fs = std::filesystem;

#if defined(__x86_64__)
const std::string kSystemCall("\x0F\x05", 2);
const std::string kNoOperation("\x90", 1);
#else
const std::string kSystemCall("\x01\x00\x00\xD4", 4);
const std::string kNoOperation("\x1F\x20\x03\xD5", 4);
#endif

std::string times(std::size_t count, const std::string& instruction) {
  std::string code;
  for (std::size_t i = 0; i < count; ++i) code += instruction;
  return code;
}

class MachineCode : public testing::Test {
 protected:
  ~MachineCode() override { fs::remove_all(folder_); }

  /// Whether the code makes system calls, as a part of a file that has others around it.
  bool found(const std::string& code) const {
    const fs::path file = folder_ / "code";
    const std::string around(64, '\x90');
    std::ofstream(file, std::ios::binary) << around << code << kSystemCall << around;
    return orb::sim::makesSystemCalls(orb::sim::ProgramBytes(file.c_str()), around.size(),
                                      code.size());
  }

  static fs::path makeFolder() {
    std::string name = (fs::temp_directory_path() / "machine-code.XXXXXX").string();
    return mkdtemp(name.data());
  }

  const fs::path folder_ = makeFolder();
};

TEST_F(MachineCode, MakesSystemCallsWhereverTheInstructionIs) {
  EXPECT_FALSE(found(""));
  EXPECT_TRUE(found(kSystemCall));
  EXPECT_FALSE(found(times(10'000, kNoOperation)));
  // Around the ends of the pieces that the file is read in.
  for (std::size_t before = 8000; before < 8400; ++before) {
    const std::size_t count = before / kNoOperation.size();
    ASSERT_TRUE(found(times(count, kNoOperation) + kSystemCall + times(99, kNoOperation)))
        << before;
  }
  EXPECT_TRUE(found(times(30'000, kNoOperation) + kSystemCall));
}

TEST_F(MachineCode, IsReadAsFarAsTheFileGoes) {
  const fs::path file = folder_ / "code";
  std::ofstream(file, std::ios::binary) << times(5000, kNoOperation);
  const orb::sim::ProgramBytes bytes(file.c_str());
  EXPECT_FALSE(orb::sim::makesSystemCalls(bytes, 0, 1u << 30));
  EXPECT_FALSE(orb::sim::makesSystemCalls(bytes, 1u << 30, 100));
}

#if defined(__x86_64__)

const std::string kMove("\x48\x89\xC3", 3);

// Each holds the two bytes of the instruction within another.
TEST_F(MachineCode, MakesNoSystemCallByBytesOfOtherInstructions) {
  const std::string lookAlikes[] = {
      std::string("\xE8\x0F\x05\x00\x00", 5),              // call, to a distance
      std::string("\x48\x8D\x05\x0F\x05\x00\x00", 7),      // lea from a distance
      std::string("\xB8\x0F\x05\x00\x00", 5),              // mov of a constant
      std::string("\x0F\xBE\x54\x0F\x05", 5),              // movsbl 5(%rdi,%rcx), %edx
      std::string("\x0F\x84\x0F\x05\x00\x00", 6),          // je
      std::string("\xC5\xFA\x6F\x05\x0F\x05\x00\x00", 8),  // vmovdqu
      std::string("\x66\xC7\x00\x0F\x05", 5),              // movw of a constant
  };
  for (const std::string& lookAlike : lookAlikes) {
    const std::string code = times(20, lookAlike + kMove + kNoOperation);
    EXPECT_FALSE(found(code)) << testing::PrintToString(lookAlike);
    EXPECT_TRUE(found(code + kSystemCall + code)) << testing::PrintToString(lookAlike);
  }
}

TEST_F(MachineCode, MakesFewSystemCallsByBytesAtRandom) {
  constexpr int kTables = 200;
  std::mt19937 random(20240311);
  int count = 0;
  for (int table = 0; table < kTables; ++table) {
    std::string bytes(400, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    count += found(bytes + kSystemCall + bytes) ? 1 : 0;
  }
  EXPECT_LT(count, kTables / 20);
}

#endif

}  // namespace
