#pragma once

#include <fstream>
#include <string>
#include <vector>

namespace orb::test {

/// One row of catalogue.tsv.
struct CatalogueRow {
  unsigned char id;
  unsigned char subId;
  unsigned short minLength;
  unsigned short maxLength;
  std::string description;

  /// Id and sub-id as one number.
  unsigned short type() const { return static_cast<unsigned short>(id * 256 + subId); }
};

/// All rows of catalogue.tsv, the end marker included. Read once; throws std::runtime_error when
/// the file cannot be read or has rows out of order.
const std::vector<CatalogueRow>& catalogueRows();

/// Whether messages with this id carry a sub-id.
inline bool hasSubId(unsigned char id) { return id >= 0x62 && id <= 0x6F; }

/// A file of this folder, without its first line, which names the columns. Throws
/// std::runtime_error when it cannot be read.
std::ifstream openTable(const std::string& name);

}  // namespace orb::test
