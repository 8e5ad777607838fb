#include "orb-gnss/catalogue.h"

#include <gtest/gtest.h>

#include <array>
#include <iterator>
#include <string>
#include <string_view>

#include "reference/catalogue_file.h"

namespace orb::test {
namespace {

constexpr const char* kUnknown = "Unknown message type";

/// The description by a plain walk over the reference rows.
const char* expectedDescription(ORBMsgId id, unsigned length) {
  for (const auto& row : catalogueRows()) {
    if (row.id == 0xFF) {
      break;
    }
    const bool lengthFits = length == 0 || (row.minLength <= length && length <= row.maxLength);
    if (row.id == id.id && row.subId == id.subId && lengthFits) {
      return row.description.c_str();
    }
  }
  return kUnknown;
}

/// Compares without the cost of an assertion for each of many million lookups.
bool describesAsExpected(ORBMsgId id, unsigned length) {
  const char* found = orbGetMessageDescription(id, static_cast<unsigned short>(length));
  return found != nullptr && std::string_view(found) == expectedDescription(id, length);
}

TEST(Catalogue, HasExactlyTheRowsOfTheReferenceTable) {
  ASSERT_EQ(catalogueRows().size(), 141U);
  ASSERT_EQ(std::size(ORBMessages), catalogueRows().size());
  for (std::size_t number = 0; number < catalogueRows().size(); ++number) {
    SCOPED_TRACE("row " + std::to_string(number));
    const auto& expected = catalogueRows()[number];
    EXPECT_EQ(ORBMessages[number].msgId.id, expected.id);
    EXPECT_EQ(ORBMessages[number].msgId.subId, expected.subId);
    EXPECT_EQ(ORBMessages[number].minLength, expected.minLength);
    EXPECT_EQ(ORBMessages[number].maxLength, expected.maxLength);
    EXPECT_EQ(ORBMessages[number].reserved, 0);
    EXPECT_EQ(ORBMessages[number].description, expected.description);
  }
}

TEST(MessageDescription, IsThatOfAPlainWalkForEveryIdentity) {
  constexpr unsigned kLengths[] = {0, 1, 2, 3, 4, 7, 15, 87, 126, 256, 258, 65535};
  for (unsigned type = 0; type < 65536; ++type) {
    const ORBMsgId id{static_cast<unsigned char>(type >> 8),
                      static_cast<unsigned char>(type & 0xFF)};
    for (const auto length : kLengths) {
      ASSERT_TRUE(describesAsExpected(id, length)) << "type " << type << " length " << length;
    }
  }
}

TEST(MessageDescription, IsThatOfAPlainWalkForEveryLengthOfCataloguedMessages) {
  for (const auto& row : catalogueRows()) {
    const ORBMsgId id{row.id, row.subId};
    for (unsigned length = 0; length < 600; ++length) {
      ASSERT_TRUE(describesAsExpected(id, length)) << row.description << " length " << length;
    }
    for (unsigned high = 1; high < 256; ++high) {
      ASSERT_TRUE(describesAsExpected(id, high * 256U + row.minLength % 256U))
          << row.description << " with " << high << " in the length's high byte";
    }
  }
}

TEST(GnssNames, AreSevenInTheOrderOfTheirIndexes) {
  constexpr std::array kNames = {"GPS", "SBAS", "GALILEO", "BEIDOU", "IMES", "QZSS", "GLONASS"};
  ASSERT_EQ(std::size(gnssNames), kNames.size());
  for (std::size_t k = 0; k < kNames.size(); ++k) {
    EXPECT_STREQ(gnssNames[k], kNames[k]);
    EXPECT_EQ(getGnssNameById(static_cast<ORBGNSSId>(k)), gnssNames[k]);
  }
  for (const ORBGNSSId beyond : {7, 256, 0x7FFFFFFF}) {
    EXPECT_STREQ(getGnssNameById(beyond), "UNKNOWN");
  }
}

}  // namespace
}  // namespace orb::test
