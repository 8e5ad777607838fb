#include "support/scripted_line.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace orb::test {
namespace {

class ScriptedLineTest : public testing::Test {
 protected:
  /// The bytes that a read finds. Without any, errno tells why, or is 0 at the end of the file.
  Bytes read(std::size_t size = 16) {
    Bytes bytes(size);
    const ssize_t count = calls_.read(0, bytes.data(), size);
    errno = count == 0 ? 0 : errno;
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
  }

  TtyCalls calls_{"/dev/null"};
  WallClock clock_;
  ScriptedLine line_{calls_, clock_};
};

TEST_F(ScriptedLineTest, DeliversOnePieceToARead) {
  line_.deliver(hex("01 02 03"));
  line_.deliver(hex("04"));
  EXPECT_EQ(read(2), hex("01 02"));
  EXPECT_EQ(read(2), hex("03")) << "the rest of the piece, and no byte of the next";
  EXPECT_FALSE(line_.isOver());
  EXPECT_EQ(read(2), hex("04"));
  EXPECT_TRUE(line_.isOver());
}

TEST_F(ScriptedLineTest, FindsNothingWhereTheScriptSaysSo) {
  line_.pause(2);
  line_.deliver({});
  line_.fail(EIO);
  line_.fail(0);
  for (const int error : {EAGAIN, EAGAIN, EAGAIN, EIO, 0}) {
    EXPECT_EQ(read(), Bytes{});
    EXPECT_EQ(errno, error);
  }
  EXPECT_TRUE(line_.isOver());
}

TEST_F(ScriptedLineTest, MovesTheClockOnceAPiece) {
  line_.deliver(hex("01 02"), 5);
  read(1);
  EXPECT_EQ(time(nullptr), WallClock::kStart + 5);
  read(1);
  EXPECT_EQ(time(nullptr), WallClock::kStart + 5);
}

TEST_F(ScriptedLineTest, StaysSilentAfterTheScript) { EXPECT_THROW(read(), LineStaysSilent); }

TEST_F(ScriptedLineTest, EndsInTimeOutOnRequest) {
  line_.endInTimeOut();
  for (int read = 1; read <= 3; ++read) {
    EXPECT_EQ(this->read(), hex("00"));
    EXPECT_EQ(time(nullptr), WallClock::kStart + read * ScriptedLine::kSecondsAfterTheScript);
  }
}

}  // namespace
}  // namespace orb::test
