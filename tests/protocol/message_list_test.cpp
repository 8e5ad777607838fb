#include "orb-gnss/message_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <initializer_list>
#include <iostream>
#include <memory>
#include <new>
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

TEST(MessageList, StartsEmpty) {
  ORBMessageList list;
  EXPECT_TRUE(list.isEmpty());
  EXPECT_EQ(list.getMessage(), nullptr);
  EXPECT_EQ(list.findFirstOfMessage(0x8300), nullptr);
}

TEST(MessageList, IsNotEmptyWhileItHoldsAMessage) {
  ORBMessageList list;
  list.AddMessage(acknowledgement());
  EXPECT_FALSE(list.isEmpty());
  const std::unique_ptr<ORBMessage> only(list.getMessage());
  EXPECT_TRUE(list.isEmpty());
}

TEST(MessageList, HandsOutTheOldestMessageFirst) {
  ORBMessage* const oldest = acknowledgement();
  ORBMessage* const middle = refusal();
  ORBMessage* const newest = acknowledgement();
  ORBMessageList list;
  list.AddMessage(oldest);
  list.AddMessage(middle);
  list.AddMessage(newest);
  for (ORBMessage* const expected : {oldest, middle, newest}) {
    const std::unique_ptr<ORBMessage> taken(list.getMessage());
    EXPECT_EQ(taken.get(), expected);
  }
  EXPECT_EQ(list.getMessage(), nullptr);
}

TEST(MessageList, FindsTheNewestOfAType) {
  ORBMessage* const older = acknowledgement();
  ORBMessage* const newer = acknowledgement();
  ORBMessageList list;
  list.AddMessage(older);
  list.AddMessage(newer);
  list.AddMessage(refusal());
  const std::unique_ptr<ORBMessage> first(list.findFirstOfMessage(0x8300));
  EXPECT_EQ(first.get(), newer);
  const std::unique_ptr<ORBMessage> second(list.findFirstOfMessage(0x8300));
  EXPECT_EQ(second.get(), older);
  EXPECT_EQ(list.findFirstOfMessage(0x8300), nullptr);
  EXPECT_FALSE(list.isEmpty()) << "the refusal stays";
}

TEST(MessageList, KeepsTheOrderOfWhatIsLeft) {
  ORBMessage* const oldest = refusal();
  ORBMessage* const newest = refusal();
  ORBMessageList list;
  list.AddMessage(oldest);
  list.AddMessage(acknowledgement());
  list.AddMessage(newest);
  delete list.findFirstOfMessage(0x8300);
  for (ORBMessage* const expected : {oldest, newest}) {
    const std::unique_ptr<ORBMessage> taken(list.getMessage());
    EXPECT_EQ(taken.get(), expected);
  }
}

TEST(MessageList, AgreesWithAPlainQueueWhateverTheOrderOfItsUse) {
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

TEST(MessageList, ComparesIdAndSubId) {
  ORBMessageList list;
  list.AddMessage(new ORBMessage(0x6580, 6, nullptr));
  EXPECT_EQ(list.findFirstOfMessage(0x6581), nullptr);
  EXPECT_EQ(list.findFirstOfMessage(0x6480), nullptr);
  EXPECT_FALSE(list.isEmpty());
  const std::unique_ptr<ORBMessage> found(list.findFirstOfMessage(0x6580));
  EXPECT_NE(found, nullptr);
}

TEST(MessageList, GivesMessagesAway) {
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

TEST(MessageList, EmptiesFromTheNewestToTheOldest) {
  ORBMessage* const oldest = acknowledgement();
  ORBMessage* const middle = refusal();
  ORBMessage* const newest = acknowledgement();
  const std::vector<const void*> expected = releaseOrder({newest, middle, oldest});
  ORBMessageList list;
  list.AddMessage(oldest);
  list.AddMessage(middle);
  list.AddMessage(newest);
  const ReleasedBlocks released;
  list.Empty();
  EXPECT_THAT(firstOf(released, expected.size()), ElementsAreArray(expected));
  EXPECT_TRUE(list.isEmpty());
}

TEST(MessageList, IsDestroyedFromTheNewestToTheOldest) {
  ORBMessage* const older = acknowledgement();
  ORBMessage* const newer = refusal();
  const std::vector<const void*> expected = releaseOrder({newer, older});
  auto list = std::make_unique<ORBMessageList>();
  list->AddMessage(older);
  list->AddMessage(newer);
  const ReleasedBlocks released;
  list.reset();
  EXPECT_THAT(firstOf(released, expected.size()), ElementsAreArray(expected));
}

TEST(MessageList, ReleasesAllItHolds) {
  const long before = liveAllocations();
  {
    ORBMessageList list;
    for (int i = 0; i < 200; ++i) {
      list.AddMessage(acknowledgement());
    }
  }
  EXPECT_EQ(liveAllocations(), before);
}

TEST(MessageList, IsUsableAfterItWasEmptied) {
  ORBMessageList list;
  list.Empty();
  list.AddMessage(acknowledgement());
  list.Empty();
  EXPECT_TRUE(list.isEmpty());
  ORBMessage* const later = refusal();
  list.AddMessage(later);
  const std::unique_ptr<ORBMessage> taken(list.getMessage());
  EXPECT_EQ(taken.get(), later);
}

TEST(MessageList, ShowsTheNewestMessageFirst) {
  ORBMessageList list;
  list.AddMessage(new ORBMessage(0x6502, 2, nullptr));
  list.AddMessage(acknowledgement());
  CapturedStream out(std::cout);
  list.DumpMessages();
  EXPECT_EQ(out.text(),
            "Message Acknowledged A0 A1 00 02 83 00 83 0D 0A \n"
            "Query 1PPS pulse width of GNSS receiver  A0 A1 00 02 65 02 67 0D 0A \n");
  const std::unique_ptr<ORBMessage> oldest(list.getMessage());
  EXPECT_EQ(oldest->getMsgSidId(), 0x6502) << "showing takes nothing out";
}

TEST(MessageList, ShowsNothingWhenItIsEmpty) {
  const ORBMessageList list;
  CapturedStream out(std::cout);
  list.DumpMessages();
  EXPECT_EQ(out.text(), "");
}

TEST(MessageList, LeavesAMessageThatItHasNoMemoryForToTheCaller) {
  ORBMessageList list;
  // The list grows by blocks: it asks for memory within so many messages, whatever their size.
  constexpr int kMostMessagesInABlock = 1000;
  int added = 0;
  bool ranOut = false;
  while (!ranOut && added < kMostMessagesInABlock) {
    std::unique_ptr<ORBMessage> message(acknowledgement());
    try {
      const FailingAllocation next(1);
      list.AddMessage(message.get());
      message.release();
      ++added;
    } catch (const std::bad_alloc&) {
      ranOut = true;
    }
  }
  ASSERT_TRUE(ranOut);
  for (int i = 0; i < added; ++i) {
    const std::unique_ptr<ORBMessage> taken(list.getMessage());
    ASSERT_NE(taken, nullptr);
  }
  EXPECT_TRUE(list.isEmpty());
}

}  // namespace
}  // namespace orb::test
