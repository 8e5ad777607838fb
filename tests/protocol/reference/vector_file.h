#pragma once

#include <string>
#include <vector>

#include "reference/text.h"

namespace orb::reference {

/// One line of explicit_vectors.tsv; vector_file.py describes the fields.
struct ExplicitVector {
  struct ListedMessage {
    unsigned short type;
    unsigned long payloadLength;
    Bytes packet;
  };

  std::string group;
  std::string name;
  std::vector<Bytes> buffers;
  std::vector<std::string> results;     ///< per buffer "position good errored unknown ack nak"
  std::vector<ListedMessage> messages;  ///< newest first
};

/// All vectors of the file in its order.
std::vector<ExplicitVector> explicitVectors();

}  // namespace orb::reference
