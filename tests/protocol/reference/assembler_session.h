#pragma once

#include <memory>
#include <string>
#include <vector>

#include "orb-gnss/message_builder.h"
#include "orb-gnss/message_list.h"
#include "reference/text.h"

namespace orb::reference {

/// The library's builder and list at work, and what they did as text.
class AssemblerSession {
 public:
  /// Hands the buffer over in an allocation of exactly its size, so that the address sanitizer
  /// sees a read behind its end. Returns "position good errored unknown ack nak".
  std::string update(unsigned char replyId, const Bytes& buffer);

  void resetCounters() { builder_.resetMessageCounters(); }

  /// Empties the list, the oldest message first or type after type in the order of the catalogue.
  std::vector<std::unique_ptr<ORBMessage>> takeByAge();
  std::vector<std::unique_ptr<ORBMessage>> takeByType();

 private:
  ORBMessageList list_;
  ORBMessageBuilder builder_{&list_};
};

}  // namespace orb::reference
