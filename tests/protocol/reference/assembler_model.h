#pragma once

#include <deque>
#include <string>
#include <vector>

#include "support/hex_text.h"

namespace orb::test {

/// A message that was found in a buffer.
struct FoundMessage {
  unsigned short type;  ///< id and sub-id
  Bytes packet;         ///< whole, with the end bytes that it should have
};

/// What is in a buffer, by a reader that goes through it byte by byte and through catalogue.tsv row
/// by row: slow, and short enough to be seen to be right. It shares nothing with the library.
struct Scan {
  explicit Scan(const Bytes& buffer) : position(scan(buffer)) {}

  unsigned int good = 0;
  unsigned int errored = 0;
  unsigned int unknown = 0;
  std::vector<FoundMessage> messages;  ///< oldest first
  unsigned long position;

 private:
  unsigned long scan(const Bytes& buffer);
};

/// A builder and its list, by scans. Messages come as texts of the form type ":" payload length ":"
/// packet, as in explicit_vectors.tsv; empty where there is none.
class AssemblerModel {
 public:
  /// Returns "position good errored unknown acknowledged refused".
  std::string update(const Bytes& buffer);
  void resetCounters();

  std::string takeOldest();
  std::string takeNewestOf(unsigned short type);
  void empty() { list_.clear(); }
  bool isEmpty() const { return list_.empty(); }
  /// The type of a message somewhere in the list; 0x8300 where there is none.
  unsigned short someType() const;

 private:
  std::string take(std::deque<FoundMessage>::iterator message);

  unsigned int good_ = 0;
  unsigned int errored_ = 0;
  unsigned int unknown_ = 0;
  unsigned int acknowledged_ = 0;
  unsigned int refused_ = 0;
  std::deque<FoundMessage> list_;  // oldest first
};

/// Numbers with blanks between them.
std::string joined(std::initializer_list<unsigned long> numbers);

/// A message as text; each byte of its packet as two digits.
std::string messageText(unsigned short type, unsigned long payloadLength, const Bytes& packet);

}  // namespace orb::test
