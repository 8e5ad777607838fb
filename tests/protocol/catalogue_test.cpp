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

std::string description(unsigned char id, unsigned char subId, unsigned short length) {
  return orbGetMessageDescription(ORBMsgId{id, subId}, length);
}

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

TEST(Catalogue, EndsWithTheMarkerAndHasItOnlyThere) {
  for (std::size_t number = 0; number < std::size(ORBMessages); ++number) {
    EXPECT_EQ(ORBMessages[number].msgId.id == 0xFF, number == 140) << "row " << number;
  }
}

TEST(Catalogue, AcceptsOneLengthOnlyExceptInFiveRows) {
  for (std::size_t number = 0; number < std::size(ORBMessages); ++number) {
    const bool wide =
        number == 68 || number == 79 || number == 90 || number == 101 || number == 103;
    EXPECT_EQ(ORBMessages[number].minLength < ORBMessages[number].maxLength, wide)
        << "row " << number;
  }
}

TEST(Catalogue, KeepsTheBytesOfTheTextsThatAreNotAscii) {
  EXPECT_STREQ(ORBMessages[30].description,
               "Retrieve GLONASS time correction parameters GPS C\xEF\x81\xB4 \xEF\x81\xB4"
               "and     of the GNSS receiver ");
  EXPECT_STREQ(ORBMessages[31].description,
               "Set GLONASS time correction parameters GPS C\xEF\x81\xB4 \xEF\x81\xB4"
               "and     to the GNSS receiver ");
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

TEST(MessageDescription, IsUnknownForAnIdOutsideTheCatalogueAtEveryLength) {
  for (unsigned length = 0; length < 65536; ++length) {
    ASSERT_EQ(description(0x61, 0x00, static_cast<unsigned short>(length)), kUnknown);
    ASSERT_EQ(description(0x8B, 0x00, static_cast<unsigned short>(length)), kUnknown);
  }
}

TEST(GnssNames, AreSevenInTheOrderOfTheirIndexes) {
  constexpr std::array kNames = {"GPS", "SBAS", "GALILEO", "BEIDOU", "IMES", "QZSS", "GLONASS"};
  ASSERT_EQ(std::size(gnssNames), kNames.size());
  for (std::size_t k = 0; k < kNames.size(); ++k) {
    EXPECT_STREQ(gnssNames[k], kNames[k]);
    EXPECT_EQ(getGnssNameById(static_cast<ORBGNSSId>(k)), gnssNames[k]);
  }
}

TEST(GnssNames, AreUnknownAboveTheLastIndex) {
  EXPECT_STREQ(getGnssNameById(6), "GLONASS");
  EXPECT_STREQ(getGnssNameById(7), "UNKNOWN");
  EXPECT_STREQ(getGnssNameById(256), "UNKNOWN");
  EXPECT_STREQ(getGnssNameById(0x7FFFFFFF), "UNKNOWN");
}

}  // namespace
}  // namespace orb::test
