#include "base/shell_word.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>

namespace orb::test {
namespace {

/// What the shell makes of a word.
std::string readByShell(const std::string& word) {
  const std::string command = "printf '%s' " + word;
  std::FILE* const pipe = popen(command.c_str(), "r");
  std::array<char, 100> text{};
  const std::size_t length = std::fread(text.data(), 1, text.size(), pipe);
  EXPECT_EQ(pclose(pipe), 0);
  return {text.data(), length};
}

TEST(ShellWord, IsReadByTheShellAsItWas) {
  for (const std::string word : {"/tmp/gps", "my line", "it's", "a\"b", "$HOME", "`id`", "a;b", "~",
                                 "*", "#x", "\\", "a\nb", "x&", "(y)", "!z", "\xC3\xBC"}) {
    EXPECT_EQ(readByShell(shellWord(word)), word);
  }
}

TEST(ShellWord, IsQuotedWhereItHasToBeOnly) {
  EXPECT_EQ(shellWord("/run/user/1000/gps-1.trace"), "/run/user/1000/gps-1.trace");
  EXPECT_EQ(shellWord("it's here"), R"('it'\''s here')");
  EXPECT_EQ(shellWord(""), "''");
}

}  // namespace
}  // namespace orb::test
