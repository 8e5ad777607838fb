#include "orb-sim/path_map.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/temporary_folder.h"

namespace orb::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMappedFile = "/nonexistent-orb-sim/device.log";

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class PathMap : public testing::Test {
 protected:
  PathMap() { sim::mapPath(kMappedFile, target_.string()); }
  ~PathMap() override { sim::clearPathMap(); }

  const TemporaryFolder folder_;
  const fs::path target_ = folder_ / "target.log";
};

TEST_F(PathMap, HoldsForFileStreams) {
  std::ofstream(kMappedFile) << "one\n";
  std::ofstream(kMappedFile, std::ios::app | std::ios::ate) << "two\n";
  EXPECT_EQ(contentOf(target_), "one\ntwo\n");
  EXPECT_EQ(contentOf(kMappedFile), "one\ntwo\n");
}

TEST_F(PathMap, RecognisesOtherSpellingsOfAPath) {
  std::ofstream(target_) << "found";
  for (const char* spelling :
       {"/nonexistent-orb-sim//device.log", "//nonexistent-orb-sim/./device.log",
        "/nonexistent-orb-sim/sub/../device.log", "/../nonexistent-orb-sim/device.log"}) {
    EXPECT_EQ(access(spelling, R_OK), 0) << spelling;
  }
  EXPECT_EQ(access("/nonexistent-orb-sim/sub/device.log", R_OK), -1);
  EXPECT_EQ(access("/device.log", R_OK), -1);
}

TEST_F(PathMap, RecognisesAPathRelativeToADirectory) {
  const fs::path mappedHere = folder_ / "here.log";
  sim::mapPath(mappedHere.string(), target_.string());
  const int directory = open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_GE(directory, 0);
  const int descriptor = openat(directory, "here.log", O_WRONLY | O_CREAT, 0600);
  ASSERT_GE(descriptor, 0);
  EXPECT_EQ(write(descriptor, "x", 1), 1);
  close(descriptor);
  struct stat status;
  EXPECT_EQ(fstatat(directory, "./here.log", &status, 0), 0);
  EXPECT_EQ(faccessat(directory, "other.log", R_OK, 0), -1);
  EXPECT_EQ(contentOf(target_), "x");
  EXPECT_EQ(unlinkat(directory, "here.log", 0), 0);
  EXPECT_FALSE(fs::exists(target_));
  close(directory);
}

TEST_F(PathMap, RecognisesAPathRelativeToTheCurrentDirectory) {
  const fs::path before = fs::current_path();
  sim::mapPath((folder_ / "here.log").string(), target_.string());
  fs::current_path(folder_.path());
  std::ofstream("here.log") << "y";
  fs::current_path(before);
  EXPECT_EQ(contentOf(target_), "y");
}

TEST_F(PathMap, ReplacesAnEarlierTarget) {
  sim::mapPath(kMappedFile, (folder_ / "second").string());
  std::ofstream(kMappedFile) << "z";
  EXPECT_FALSE(fs::exists(target_));
  EXPECT_EQ(contentOf(folder_ / "second"), "z");
}

TEST_F(PathMap, IsEmptyAfterClearing) {
  std::ofstream(target_) << "z";
  sim::clearPathMap();
  EXPECT_FALSE(fs::exists(kMappedFile));
  sim::mapPath(kMappedFile, target_.string());
  EXPECT_TRUE(fs::exists(kMappedFile));
}

TEST_F(PathMap, KeepsErrno) {
  std::ofstream(target_) << "z";
  errno = EDOM;
  EXPECT_EQ(access(kMappedFile, R_OK), 0);
  EXPECT_EQ(errno, EDOM);
}

TEST_F(PathMap, PassesANullPathOn) {
  int (*const volatile plainAccess)(const char*, int) = access;
  EXPECT_EQ(plainAccess(nullptr, R_OK), -1);
  EXPECT_EQ(errno, EFAULT);
}

using PathMapDeathTest = PathMap;

TEST_F(PathMapDeathTest, EndsTheProcessWhereAPathCannotBeMapped) {
  EXPECT_DEATH(sim::mapPath("relative", "/x"), "orb-sim: a path to be mapped is not absolute");
  EXPECT_DEATH(sim::mapPath("/a", ""), "orb-sim: a path to be mapped is too long");
  EXPECT_DEATH(sim::mapPath("/" + std::string(5000, 'a'), "/x"), "too long");
  EXPECT_DEATH(
      {
        for (int i = 0; i < sim::kMaxMappedPaths; ++i) {
          sim::mapPath("/nonexistent-orb-sim/" + std::to_string(i), "/x");
        }
      },
      "orb-sim: more paths are mapped than there is room for");
}

}  // namespace
}  // namespace orb::test
