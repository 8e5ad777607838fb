#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/hex_text.h"

namespace orb::test {

/// One line of explicit_vectors.tsv; README.md describes its columns.
struct ExplicitVector {
  std::string name;
  std::vector<Bytes> buffers;
  std::vector<std::string> results;
  std::vector<std::string> messages;  ///< newest first
};

/// All vectors of the file by their groups.
const std::map<std::string, std::vector<ExplicitVector>>& explicitVectors();

}  // namespace orb::test
