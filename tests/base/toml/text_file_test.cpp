#include "base/toml/text_file.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "support/files.h"
#include "support/temporary_folder.h"

namespace orb::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Problems = std::vector<std::string>;

constexpr std::size_t kMostBytes = 1 << 20;

class TextFile : public testing::Test {
 protected:
  Problems problemsOf(const std::string& path, std::size_t expectedSize) {
    ProblemList problems(path == file_ ? "f" : path);
    const auto text = readTextFile(path, problems);
    EXPECT_EQ(text.value_or("").size(), expectedSize);
    return problems.lines();
  }

  const TemporaryFolder folder_;
  const std::string file_ = folder_ / "file";
};

TEST_F(TextFile, IsReadUpToOneMebibyte) {
  for (const std::size_t size : {std::size_t{0}, std::size_t{5}, kMostBytes}) {
    fill(file_, std::string(size, '#'));
    EXPECT_THAT(problemsOf(file_, size), IsEmpty());
  }
  fill(file_, std::string(kMostBytes + 1, '#'));
  EXPECT_THAT(problemsOf(file_, 0), ElementsAre("f: cannot read it: it has more than 1 MiB"));
}

TEST_F(TextFile, IsARegularFile) {
  EXPECT_THAT(problemsOf(file_, 0), ElementsAre("f: cannot read it: No such file or directory"));
  ASSERT_EQ(::mkfifo(file_.c_str(), S_IRWXU), 0);
  EXPECT_THAT(problemsOf(file_, 0), ElementsAre("f: cannot read it: it is no regular file"));
  EXPECT_THAT(problemsOf("/dev/zero", 0),
              ElementsAre("/dev/zero: cannot read it: it is no regular file"));
  EXPECT_THAT(problemsOf("/", 0), ElementsAre("/: cannot read it: Is a directory"));
}

TEST(TomlText, HasABoundedDepth) {
  const auto key = [](std::size_t parts) {
    std::string key = "a";
    while (--parts > 0) {
      key += ".a";
    }
    return key;
  };
  const auto problemsOf = [](const std::string& text) {
    ProblemList problems("f");
    const bool isParsed = parseToml(text, problems).has_value();
    EXPECT_EQ(isParsed, problems.lines().empty());
    return problems.lines();
  };
  EXPECT_THAT(problemsOf("x = 1\n[" + key(200) + "]\n" + key(200) + " = 0.5\n"), IsEmpty());
  for (const std::string& deep :
       {key(150'000) + " = 1", "[" + key(150'000) + "]", "[[" + key(150'000) + "]]\n"}) {
    EXPECT_THAT(problemsOf("x = 1\n" + deep), ElementsAre("f:2: has more than 256 dots"));
  }
  // Arrays go on over the end of a line.
  std::string nested;
  for (int level = 0; level < 600; ++level) {
    nested += key(200) + " = [\n{";
  }
  EXPECT_THAT(problemsOf(nested), ElementsAre(HasSubstr("nested value depth of 16")));
}

TEST(ProblemListTest, KeepsWhatIsQuotedFromTheTerminal) {
  ProblemList problems("f");
  problems.add(3, "there is no key 'a\nb\x1b[2J\xc2\x9b'");
  EXPECT_THAT(problems.lines(), ElementsAre(R"(f:3: there is no key 'a b\x1b[2J\xc2\x9b')"));
}

}  // namespace
}  // namespace orb::test
