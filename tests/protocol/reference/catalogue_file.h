#pragma once

#include <string>
#include <vector>

namespace orb::reference {

/// One row of catalogue.tsv.
struct CatalogueRow {
  unsigned char id;
  unsigned char subId;
  unsigned short minLength;
  unsigned short maxLength;
  std::string description;
};

/// All rows of catalogue.tsv, the end marker included. Read once; throws std::runtime_error when
/// the file cannot be read or has rows out of order.
const std::vector<CatalogueRow>& catalogueRows();

/// Whether messages with this id carry a sub-id.
bool hasSubId(unsigned char id);

}  // namespace orb::reference
