#include "orb-gnss/message_list.h"

#include <algorithm>

ORBMessageList::ORBMessageList() = default;

ORBMessageList::~ORBMessageList() { Empty(); }

void ORBMessageList::AddMessage(ORBMessage* message) { messages_.push_front(message); }

ORBMessage* ORBMessageList::getMessage() {
  if (messages_.empty()) {
    return nullptr;
  }
  ORBMessage* oldest = messages_.back();
  messages_.pop_back();
  return oldest;
}

ORBMessage* ORBMessageList::findFirstOfMessage(ORBMessageMsgValue value) {
  const auto found =
      std::find_if(messages_.begin(), messages_.end(),
                   [value](const ORBMessage* message) { return message->getMsgSidId() == value; });
  if (found == messages_.end()) {
    return nullptr;
  }
  ORBMessage* message = *found;
  messages_.erase(found);
  return message;
}

bool ORBMessageList::isEmpty() const { return messages_.empty(); }

void ORBMessageList::Empty() {
  for (unsigned long i = 0; i < messages_.size(); ++i) {
    delete messages_.at(i);
  }
  messages_.clear();
}

void ORBMessageList::DumpMessages() const {
  for (const ORBMessage* message : messages_) {
    message->showPacket();
  }
}
