#include "orb-gnss/message_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <initializer_list>
#include <iostream>
#include <memory>
#include <random>
#include <type_traits>
#include <vector>

#include "support/allocations.h"
#include "support/captured_stream.h"

namespace orb::test {
namespace {

using testing::ElementsAreArray;

static_assert(!std::is_polymorphic_v<ORBMessageList>);

ORBMessage* acknowledgement() { return new ORBMessage(0x8300, 2, nullptr); }
ORBMessage* refusal() { return new ORBMessage(0x8400, 2, nullptr); }

class MessageList : public testing::Test {
 protected:
  /// Adds messages, the oldest first.
  void add(std::initializer_list<ORBMessage*> messages) {
    for (ORBMessage* const message : messages) {
      list_.AddMessage(message);
    }
  }

  /// Takes all messages, the oldest first, and expects these.
  void expectTaken(std::initializer_list<const ORBMessage*> messages) {
    for (const ORBMessage* const expected : messages) {
      EXPECT_FALSE(list_.isEmpty());
      const std::unique_ptr<ORBMessage> taken(list_.getMessage());
      EXPECT_EQ(taken.get(), expected);
    }
    EXPECT_TRUE(list_.isEmpty());
    EXPECT_EQ(list_.getMessage(), nullptr);
    EXPECT_EQ(list_.findFirstOfMessage(0x8300), nullptr);
  }

  ORBMessageList list_;
};

TEST_F(MessageList, StartsEmpty) { expectTaken({}); }

TEST_F(MessageList, AgreesWithAPlainQueueWhateverTheOrderOfItsUse) {
  std::minstd_rand random;
  const auto choose = [&random](unsigned long choices) { return (random() >> 8) % choices; };
  std::deque<ORBMessage*> queue;  // newest first
  ORBMessageList list;
  for (int step = 0; step < 20000; ++step) {
    const unsigned long additions = step % 2000 < 1000 ? 7 : 2;  // in ten: it grows, then shrinks
    const unsigned long choice = choose(10);
    if (choice < additions) {
      queue.push_front(choose(2) == 0 ? acknowledgement() : refusal());
      list.AddMessage(queue.front());
    } else if (choice < 8) {
      const std::unique_ptr<ORBMessage> oldest(list.getMessage());
      ASSERT_EQ(oldest.get(), queue.empty() ? nullptr : queue.back());
      if (oldest != nullptr) {
        queue.pop_back();
      }
    } else {
      const auto newest = std::find_if(queue.begin(), queue.end(), [](const ORBMessage* message) {
        return message->getMsgSidId() == 0x8400;
      });
      const std::unique_ptr<ORBMessage> refused(list.findFirstOfMessage(0x8400));
      ASSERT_EQ(refused.get(), newest == queue.end() ? nullptr : *newest);
      if (refused != nullptr) {
        queue.erase(newest);
      }
    }
    ASSERT_EQ(list.isEmpty(), queue.empty());
  }
}

TEST_F(MessageList, ComparesIdAndSubId) {
  add({new ORBMessage(0x6580, 6, nullptr)});
  EXPECT_EQ(list_.findFirstOfMessage(0x6581), nullptr);
  EXPECT_EQ(list_.findFirstOfMessage(0x6480), nullptr);
  EXPECT_FALSE(list_.isEmpty());
  const std::unique_ptr<ORBMessage> found(list_.findFirstOfMessage(0x6580));
  EXPECT_NE(found, nullptr);
}

TEST_F(MessageList, GivesMessagesAway) {
  const long before = liveAllocations();
  {
    std::unique_ptr<ORBMessage> found;
    std::unique_ptr<ORBMessage> taken;
    {
      ORBMessageList list;
      list.AddMessage(acknowledgement());
      list.AddMessage(refusal());
      found.reset(list.findFirstOfMessage(0x8400));
      taken.reset(list.getMessage());
    }
    EXPECT_EQ(found->getMsgSidId(), 0x8400);
    EXPECT_EQ(taken->getMsgSidId(), 0x8300);
    EXPECT_EQ(liveAllocations(), before + 4) << "two messages, each with its packet";
  }
  EXPECT_EQ(liveAllocations(), before);
}

// The blocks of some messages in the order in which deleting the messages releases them: a message
// lets go of its packet before its own storage is released.
std::vector<const void*> releaseOrder(std::initializer_list<const ORBMessage*> messages) {
  std::vector<const void*> blocks;
  for (const ORBMessage* message : messages) {
    blocks.push_back(message->getPacketData());
    blocks.push_back(message);
  }
  return blocks;
}

std::vector<const void*> firstOf(const ReleasedBlocks& released, std::size_t count) {
  std::vector<const void*> blocks;
  for (std::size_t i = 0; i < std::min(count, released.count()); ++i) {
    blocks.push_back(released[i]);
  }
  return blocks;
}

// Emptied or destroyed, a list releases the newest message first.
TEST(MessageListMemory, IsReleasedFromTheNewestToTheOldest) {
  for (const bool isDestroyed : {false, true}) {
    ORBMessage* const oldest = acknowledgement();
    ORBMessage* const middle = refusal();
    ORBMessage* const newest = acknowledgement();
    const std::vector<const void*> expected = releaseOrder({newest, middle, oldest});
    auto list = std::make_unique<ORBMessageList>();
    list->AddMessage(oldest);
    list->AddMessage(middle);
    list->AddMessage(newest);
    const ReleasedBlocks released;
    if (isDestroyed) {
      list.reset();
    } else {
      list->Empty();
      EXPECT_TRUE(list->isEmpty());
    }
    EXPECT_THAT(firstOf(released, expected.size()), ElementsAreArray(expected));
  }
}

TEST(MessageListMemory, IsAllReleased) {
  const long before = liveAllocations();
  {
    ORBMessageList list;
    for (int i = 0; i < 200; ++i) {
      list.AddMessage(acknowledgement());
    }
  }
  EXPECT_EQ(liveAllocations(), before);
}

TEST_F(MessageList, IsUsableAfterItWasEmptied) {
  list_.Empty();
  add({acknowledgement(), refusal(), refusal(), refusal()});
  delete list_.getMessage();
  list_.Empty();
  ORBMessage* const later = refusal();
  add({later});
  expectTaken({later});
}

TEST_F(MessageList, ShowsTheNewestMessageFirst) {
  add({new ORBMessage(0x6502, 2, nullptr), acknowledgement()});
  CapturedStream out(std::cout);
  list_.DumpMessages();
  EXPECT_EQ(out.text(),
            "Message Acknowledged A0 A1 00 02 83 00 83 0D 0A \n"
            "Query 1PPS pulse width of GNSS receiver  A0 A1 00 02 65 02 67 0D 0A \n");
  const std::unique_ptr<ORBMessage> oldest(list_.getMessage());
  EXPECT_EQ(oldest->getMsgSidId(), 0x6502) << "showing takes nothing out";
}

TEST_F(MessageList, ShowsNothingWhenItIsEmpty) {
  CapturedStream out(std::cout);
  list_.DumpMessages();
  EXPECT_EQ(out.text(), "");
}

}  // namespace
}  // namespace orb::test
