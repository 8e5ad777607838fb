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

TEST(MessageDescription, FollowsIdSubIdAndLength) {
  constexpr const char* kAcknowledged = "Message Acknowledged";
  constexpr const char* kPolygon = "Configure geo-fencing data by polygon to GNSS receiver ";
  constexpr const char* kInterval = "Extended NMEA message interval of GNSS receiver";
  const struct {
    ORBMsgId id;
    unsigned short length;
    const char* expected;
  } cases[] = {
      // The null message is an ordinary row.
      {{0x00, 0x00}, 0, "Null message"},
      {{0x00, 0x00}, 1, kUnknown},
      // The length is within the row's limits, or 0, which stands for any length.
      {{0x83, 0x00}, 2, kAcknowledged},
      {{0x83, 0x00}, 3, kUnknown},
      {{0x83, 0x00}, 1, kUnknown},
      {{0x83, 0x00}, 0, kAcknowledged},
      {{0x64, 0x34}, 0, kPolygon},
      // Both limits of a wide row are within it.
      {{0x64, 0x81}, 3, kUnknown},
      {{0x64, 0x81}, 4, kInterval},
      {{0x64, 0x81}, 10, kInterval},
      {{0x64, 0x81}, 14, kInterval},
      {{0x64, 0x81}, 15, kUnknown},
      // The end marker is no message.
      {{0xFF, 0xFF}, 0, kUnknown},
      {{0xFF, 0xFF}, 1, kUnknown},
      {{0xFF, 0x00}, 0, kUnknown},
      // No sub-id fits an id that carries none.
      {{0x83, 0x01}, 2, kUnknown},
      {{0x83, 0x01}, 0, kUnknown},
      // 8B as an id would stand for a message of any length; as a sub-id it does not.
      {{0x64, 0x8B}, 3, "Navigation mode of GNSS receiver "},
      {{0x64, 0x8B}, 4, kUnknown},
  };
  for (const auto& [id, length, expected] : cases) {
    EXPECT_STREQ(orbGetMessageDescription(id, length), expected)
        << int{id.id} << ' ' << int{id.subId} << " length " << length;
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
