#include "orb-gnss/message_list.h"

#include <algorithm>
#include <iterator>

ORBMessageList::ORBMessageList() = default;

ORBMessageList::~ORBMessageList() { Empty(); }

ORBMessageList::Position ORBMessageList::oldest() {
  return messages_.begin() + static_cast<std::ptrdiff_t>(taken_);
}

void ORBMessageList::AddMessage(ORBMessage* message) { messages_.push_back(message); }

ORBMessage* ORBMessageList::getMessage() {
  if (isEmpty()) {
    return nullptr;
  }
  ORBMessage* message = *oldest();
  ++taken_;
  // The vacant places go once they are half of all: no more messages move up than were taken.
  if (taken_ >= messages_.size() / 2) {
    messages_.erase(messages_.begin(), oldest());
    taken_ = 0;
  }
  return message;
}

ORBMessage* ORBMessageList::findFirstOfMessage(ORBMessageMsgValue value) {
  const auto reverseEnd = std::make_reverse_iterator(oldest());
  const auto found =
      std::find_if(messages_.rbegin(), reverseEnd,
                   [value](const ORBMessage* message) { return message->getMsgSidId() == value; });
  if (found == reverseEnd) {
    return nullptr;
  }
  ORBMessage* message = *found;
  messages_.erase(std::next(found).base());
  return message;
}

bool ORBMessageList::isEmpty() const { return messages_.size() == taken_; }

void ORBMessageList::Empty() {
  for (std::size_t place = messages_.size(); place > taken_; --place) {
    delete messages_[place - 1];
  }
  messages_.clear();
  taken_ = 0;
}

void ORBMessageList::DumpMessages() const {
  for (std::size_t place = messages_.size(); place > taken_; --place) {
    messages_[place - 1]->showPacket();
  }
}
