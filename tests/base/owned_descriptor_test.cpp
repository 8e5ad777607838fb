#include "base/owned_descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

namespace orb::test {
namespace {

int open() { return ::open("/dev/null", O_RDONLY | O_CLOEXEC); }

bool isClosed(int descriptor) { return fcntl(descriptor, F_GETFD) < 0 && errno == EBADF; }

TEST(OwnedDescriptor, IsClosedWhenItsOwnerGoes) {
  int descriptor = -1;
  {
    const OwnedDescriptor owned(open());
    descriptor = owned.get();
    EXPECT_TRUE(owned.isOpen());
    EXPECT_FALSE(isClosed(descriptor));
  }
  EXPECT_TRUE(isClosed(descriptor));
}

TEST(OwnedDescriptor, IsNoneAfterAReset) {
  OwnedDescriptor owned(open());
  const int descriptor = owned.get();
  owned.reset();
  EXPECT_TRUE(isClosed(descriptor));
  EXPECT_FALSE(owned.isOpen());
  EXPECT_EQ(owned.get(), -1);
}

TEST(OwnedDescriptor, BelongsToTheOneThatItIsMovedTo) {
  OwnedDescriptor first(open());
  const int descriptor = first.get();
  const OwnedDescriptor second = std::move(first);
  EXPECT_EQ(second.get(), descriptor);
  EXPECT_FALSE(first.isOpen());
  EXPECT_FALSE(isClosed(descriptor));
}

TEST(OwnedDescriptor, IsClosedWhereAnotherTakesItsPlace) {
  OwnedDescriptor owned(open());
  OwnedDescriptor next(open());
  const int before = owned.get();
  const int after = next.get();
  owned = std::move(next);
  EXPECT_TRUE(isClosed(before));
  EXPECT_EQ(owned.get(), after);
  EXPECT_FALSE(next.isOpen());
}

TEST(OwnedDescriptor, ThrowsWhatAFailedCallHasLeft) {
  EXPECT_FALSE(OwnedDescriptor(::open("/no/such", O_RDONLY)).isOpen());
  try {
    const OwnedDescriptor owned(::open("/no/such", O_RDONLY), "/no/such");
    FAIL() << "nothing was thrown";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    EXPECT_EQ(std::string(error.what()).rfind("/no/such: ", 0), 0U);
  }
}

}  // namespace
}  // namespace orb::test
