#pragma once

#include <cstddef>
#include <string>

#include "trace/stream_decoder.h"

namespace orb::sim {

/// What has been found in a stream.
struct StreamCounts {
  std::size_t messages = 0;      ///< good packets with messages of the catalogue
  std::size_t unknown = 0;       ///< good packets with others
  std::size_t damaged = 0;       ///< packets that are damaged
  std::size_t sentences = 0;     ///< NMEA sentences
  std::size_t badSentences = 0;  ///< those whose checksum is wrong
  std::size_t otherBytes = 0;    ///< bytes of nothing of these

  void add(const StreamItem& item);

  /// One line.
  std::string text() const;
};

/// An item in words, on one line of printable characters: message id, the catalogue's description
/// and the body's bytes, or what else it is.
std::string describe(const StreamItem& item);

}  // namespace orb::sim
