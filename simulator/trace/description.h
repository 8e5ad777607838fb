#pragma once

#include <cstddef>
#include <string>
#include <string_view>

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

/// The catalogue's words for a message of whatever length; empty for one that it does not have.
std::string_view catalogueText(const Frame& frame);

/// The text of a sentence, or of other text, without the line's end; empty for what is no text, or
/// is too long.
std::string lineOf(const StreamItem& item);

/// An item in words, on one line of printable characters: message id, the catalogue's description,
/// the body's bytes and fields, or what else it is.
std::string describe(const StreamItem& item);

}  // namespace orb::sim
