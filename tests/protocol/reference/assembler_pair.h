#pragma once

#include <stdexcept>
#include <string>

#include "orb-gnss/message_builder.h"
#include "orb-gnss/message_list.h"
#include "reference/assembler_model.h"

namespace orb::test {

/// The library's builder and list beside their model. Every function does the same with both and
/// throws Disagreement where they differ.
class AssemblerPair {
 public:
  struct Disagreement : std::logic_error {
    using std::logic_error::logic_error;
  };

  /// Scans a buffer of at most 128 KiB, which ends where an inaccessible page begins. Returns
  /// "position good errored unknown acknowledged refused".
  std::string update(unsigned char replyId, const Bytes& buffer);
  void resetCounters();

  /// These return the message as text, or an empty text; see AssemblerModel. Every getter of the
  /// message has to agree with its packet.
  std::string takeOldest();
  std::string takeNewestOf(unsigned short type);
  void empty();
  bool isEmpty() const { return model_.isEmpty(); }
  unsigned short someType() const { return model_.someType(); }

 private:
  std::string counters() const;
  void compareLists() const;

  ORBMessageList list_;
  ORBMessageBuilder builder_{&list_};
  AssemblerModel model_;
};

}  // namespace orb::test
