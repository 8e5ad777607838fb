#include "protocol/catalogue_index.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace orb::test {
namespace {

/// A copy of the catalogue that a test can spoil.
struct Copy {
  Copy() { std::copy(std::begin(ORBMessages), std::end(ORBMessages), rows); }
  ORBMessageInfo rows[std::size(ORBMessages)];
};

TEST(CatalogueIndex, FindsTheRowOfEveryMessageAndNoOther) {
  const CatalogueIndex index(ORBMessages);
  for (unsigned int id = 0; id <= 0xFF; ++id) {
    for (unsigned int subId = 0; subId <= 0xFF; ++subId) {
      unsigned char expected = CatalogueIndex::kNoRow;
      for (unsigned char row = 0; row <= kLastMessage; ++row) {
        if (ORBMessages[row].msgId.id == id && ORBMessages[row].msgId.subId == subId) {
          expected = row;
        }
      }
      EXPECT_EQ(index.rowOf({static_cast<unsigned char>(id), static_cast<unsigned char>(subId)}),
                expected)
          << id << ' ' << subId;
    }
  }
}

TEST(CatalogueIndex, LeavesTheEndMarkerOut) {
  EXPECT_EQ(ORBMessages[kLastMessage + 1].msgId.id, 0xFF);
  EXPECT_EQ(CatalogueIndex(ORBMessages).rowOf({0xFF, 0x00}), CatalogueIndex::kNoRow);
}

TEST(CatalogueIndex, RefusesTwoRowsForOneMessage) {
  Copy copy;
  copy.rows[7].msgId = copy.rows[60].msgId;
  EXPECT_ANY_THROW(CatalogueIndex{copy.rows});
}

TEST(CatalogueIndex, RefusesASubIdOnAnIdThatCarriesNone) {
  Copy copy;
  copy.rows[7].msgId = {0x0C, 0x01};
  EXPECT_ANY_THROW(CatalogueIndex{copy.rows});
}

}  // namespace
}  // namespace orb::test
