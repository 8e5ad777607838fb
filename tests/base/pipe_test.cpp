#include "base/pipe.h"

#include <gtest/gtest.h>

namespace orb::test {
namespace {

TEST(Pipe, CarriesBytesUntilItsWritingEndIsClosed) {
  Pipe pipe;
  char byte = 'x';
  EXPECT_EQ(write(pipe.writing.get(), &byte, 1), 1);
  pipe.writing.reset();
  byte = 0;
  EXPECT_EQ(read(pipe.reading.get(), &byte, 1), 1);
  EXPECT_EQ(byte, 'x');
  EXPECT_EQ(read(pipe.reading.get(), &byte, 1), 0);
}

TEST(Pipe, IsClosedInStartedPrograms) {
  const Pipe pipe;
  EXPECT_EQ(fcntl(pipe.reading.get(), F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(fcntl(pipe.writing.get(), F_GETFD), FD_CLOEXEC);
}

}  // namespace
}  // namespace orb::test
