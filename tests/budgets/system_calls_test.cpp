// How many system calls an exchange takes: exactly those that it cannot do without.

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "marks.h"
#include "system_call_trace.h"

namespace {

using testing::Contains;
using testing::Le;
using testing::SizeIs;

// The C library's tcsetattr makes one to three calls, as its version wants it.
TEST(SystemCalls, OfAQueryAreThoseOfABareLoop) {
  if (!orb::test::tracingIsPermitted()) {
    GTEST_SKIP() << "no process may trace another in this container";
  }
  const auto queries = orb::test::tracedCalls(ORB_QUERIES_TO_TRACE);
  ASSERT_THAT(queries, SizeIs(2 * orb::test::kTracedTurns));
  const std::vector<std::string>& byLoop = queries.back();
  const std::vector<std::string>& byLibrary = queries[queries.size() - 2];
  EXPECT_EQ(byLibrary, byLoop);
  for (const char* const call :
       {"openat", "ioctl TCFLSH", "ioctl TCSETS", "write", "fsync", "read", "close"}) {
    EXPECT_THAT(byLoop, Contains(call).Times(1));
  }
  EXPECT_THAT(byLoop, SizeIs(Le(10)));
}

}  // namespace
