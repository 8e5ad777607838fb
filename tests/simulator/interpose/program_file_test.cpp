#include "interpose/program_file.h"

#include <elf.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "support/temporary_folder.h"

namespace orb::test {
namespace {

namespace fs = std::filesystem;

using sim::inspectProgram;

const fs::path kPrograms = ORB_SIM_TEST_PROGRAMS;
constexpr char kNone[] = "none";

std::string obstacleOf(const fs::path& file) {
  const char* const obstacle = inspectProgram(file.c_str()).obstacle;
  return obstacle != nullptr ? obstacle : kNone;
}

std::string runtimesOf(const fs::path& file) { return inspectProgram(file.c_str()).runtimes; }

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class ProgramFileTest : public testing::Test {
 protected:
  fs::path makeFile(const std::string& content, const std::string& name = "file") const {
    const fs::path file = folder_ / name;
    std::ofstream(file, std::ios::binary) << content;
    fs::permissions(file, fs::perms::owner_all);
    return file;
  }

  /// A copy of a program with one byte replaced.
  fs::path makeVariant(const fs::path& program, std::size_t offset, unsigned char value) const {
    std::string content = contentOf(program);
    content.at(offset) = static_cast<char>(value);
    return makeFile(content);
  }

  const TemporaryFolder folder_;
};

TEST_F(ProgramFileTest, LetsAnOrdinaryProgramBe) {
  EXPECT_EQ(obstacleOf(kPrograms / "file_calls"), kNone);
  EXPECT_EQ(runtimesOf(kPrograms / "file_calls"), "");
}

TEST_F(ProgramFileTest, FindsTheSanitizerRuntimesThatAProgramNeeds) {
  const fs::path program = kPrograms / "file_streams_asan_g++";
  if (!fs::exists(program)) {
    GTEST_SKIP() << "there is no g++";
  }
  const std::string runtimes = runtimesOf(program);
  EXPECT_EQ(runtimes.rfind("libasan.so.", 0), 0u) << runtimes;
  EXPECT_NE(runtimes.find(":libubsan.so."), std::string::npos) << runtimes;
}

TEST_F(ProgramFileTest, RefusesAStaticProgramAndAGoProgram) {
  EXPECT_EQ(obstacleOf(kPrograms / "static_program"), "is statically linked");
  EXPECT_EQ(obstacleOf(kPrograms / "go_note"),
            "is a Go program, which makes system calls without the C library");
}

TEST_F(ProgramFileTest, RefusesAProgramForAnotherMachineOrWordSize) {
  const std::string expected = "is built for another machine or word size";
  EXPECT_EQ(obstacleOf(makeVariant(kPrograms / "file_calls", EI_CLASS, ELFCLASS32)), expected);
  EXPECT_EQ(obstacleOf(makeVariant(kPrograms / "file_calls", EI_DATA, ELFDATA2MSB)), expected);
  EXPECT_EQ(
      obstacleOf(makeVariant(kPrograms / "file_calls", offsetof(Elf64_Ehdr, e_machine), EM_MIPS)),
      expected);
}

TEST_F(ProgramFileTest, RefusesAProgramThatGivesRights) {
  if (getuid() != 0) {
    GTEST_SKIP() << "only root can make a program of another user";
  }
  const fs::path program = makeFile(contentOf(kPrograms / "file_calls"));
  ASSERT_EQ(chown(program.c_str(), 1, 1), 0);
  const std::string expected = "runs with other rights than its caller's";
  ASSERT_EQ(chmod(program.c_str(), 04755), 0);
  EXPECT_EQ(obstacleOf(program), expected);
  ASSERT_EQ(chmod(program.c_str(), 02755), 0);
  EXPECT_EQ(obstacleOf(program), expected);
  ASSERT_EQ(chmod(program.c_str(), 0755), 0);
  EXPECT_EQ(obstacleOf(program), kNone);
}

TEST_F(ProgramFileTest, TakesAScriptForItsInterpreter) {
  const fs::path first = makeFile("#! " + (kPrograms / "static_program").string() + " -x\n", "a");
  const fs::path second = makeFile("#!" + first.string(), "b");
  EXPECT_EQ(obstacleOf(first), "is statically linked");
  EXPECT_EQ(obstacleOf(second), "is statically linked");
  EXPECT_EQ(obstacleOf(makeFile("#!/bin/sh\nexit\n")), kNone);
  EXPECT_EQ(obstacleOf(makeFile("#!" + (folder_ / "file").string() + "\n")), kNone) << "itself";
}

TEST_F(ProgramFileTest, LetsWhatIsNoProgramBe) {
  EXPECT_EQ(obstacleOf(folder_ / "missing"), kNone);
  EXPECT_EQ(obstacleOf(folder_.path()), kNone);
  EXPECT_EQ(obstacleOf(makeFile("")), kNone);
  EXPECT_EQ(obstacleOf(makeFile("#!")), kNone);
  EXPECT_EQ(obstacleOf(makeFile("#!" + std::string(10'000, '/'))), kNone);
  EXPECT_EQ(obstacleOf(makeFile("echo\n")), kNone);
}

TEST_F(ProgramFileTest, ReadsNoFurtherThanAProgramThatIsCutShort) {
  const std::string whole = contentOf(kPrograms / "file_calls").substr(0, 1500);
  for (std::size_t length = SELFMAG; length < whole.size(); length += 7) {
    const std::string obstacle = obstacleOf(makeFile(whole.substr(0, length)));
    if (length < sizeof(Elf64_Ehdr)) {
      EXPECT_EQ(obstacle, "is built for another machine or word size");
    } else {
      EXPECT_TRUE(obstacle == kNone || obstacle == "is statically linked") << obstacle;
    }
  }
}

class FoundProgram : public ProgramFileTest {
 protected:
  FoundProgram() { setenv("PATH", ("/nonexistent:" + folder_.path().string()).c_str(), 1); }
  ~FoundProgram() override { setenv("PATH", before_.c_str(), 1); }

  static std::string find(const char* name) {
    char found[PATH_MAX];
    return sim::findProgram(name, found);
  }

  const std::string before_ = std::getenv("PATH");
};

TEST_F(FoundProgram, IsTheFirstExecutableFileInThePath) {
  fs::create_directory(folder_ / "file");
  EXPECT_EQ(find("file"), "file");
  fs::remove(folder_ / "file");
  const fs::path file = makeFile("");
  EXPECT_EQ(find("file"), file);
  fs::permissions(file, fs::perms::owner_read);
  EXPECT_EQ(find("file"), "file");
  EXPECT_EQ(find("./file"), "./file");
}

TEST_F(FoundProgram, IsLookedForInTheCurrentDirectoryWhereThePathHasAGap) {
  makeFile("");
  const fs::path before = fs::current_path();
  fs::current_path(folder_.path());
  setenv("PATH", "/nonexistent::/bin", 1);
  EXPECT_EQ(find("file"), "./file");
  fs::current_path(before);
}

}  // namespace
}  // namespace orb::test
