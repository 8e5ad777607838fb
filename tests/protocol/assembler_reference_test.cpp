// The packet assembler and its model in reference/: both have the outcomes of explicit_vectors.tsv,
// and the same outcome for a million random buffers.

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "reference/assembler_pair.h"
#include "reference/buffer_generator.h"
#include "reference/explicit_vectors.h"

namespace orb::test {
namespace {

constexpr unsigned char kReplyId = 0x83;

struct Group {
  const char* name;
  std::size_t vectors;
};

constexpr Group kGroups[] = {
    {"EdgeCases", 47},   {"CatalogueGood", 424},  {"CatalogueSpoilt", 560}, {"CatalogueCut", 2106},
    {"Boundaries", 656}, {"ClaimedLengths", 492}, {"Identities", 304},      {"ModeReports", 57},
    {"Nested", 144},     {"StartBytes", 369},     {"SingleBytes", 448},     {"Repeated", 120},
    {"Mutated", 900}};

class ExplicitVectors : public testing::TestWithParam<Group> {};

TEST_P(ExplicitVectors, AreTheOutcomesOfLibraryAndModel) {
  const auto& vectors = explicitVectors().at(GetParam().name);
  EXPECT_EQ(vectors.size(), GetParam().vectors);
  for (const ExplicitVector& vector : vectors) {
    SCOPED_TRACE(vector.name);
    AssemblerPair pair;
    ASSERT_EQ(vector.buffers.size(), vector.results.size());
    for (std::size_t k = 0; k < vector.buffers.size(); ++k) {
      EXPECT_EQ(pair.update(kReplyId, vector.buffers[k]), vector.results[k]);
    }
    for (auto message = vector.messages.rbegin(); message != vector.messages.rend(); ++message) {
      EXPECT_EQ(pair.takeOldest(), *message);
    }
    EXPECT_TRUE(pair.isEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(AssemblerReference, ExplicitVectors, testing::ValuesIn(kGroups),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ExplicitVectorFile, HasNoGroupThatIsNotTested) {
  EXPECT_EQ(explicitVectors().size(), std::size(kGroups));
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ORB_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer) || \
    __has_feature(thread_sanitizer)
#define ORB_SANITIZED 1
#endif
#endif

constexpr unsigned kBlocks = 1024;
constexpr unsigned kBlocksPerTest = 64;
#ifdef ORB_SANITIZED
constexpr unsigned kBlocksPlayedPerTest = 32;
#else
constexpr unsigned kBlocksPlayedPerTest = kBlocksPerTest;
#endif
constexpr unsigned kBuffersPerBlock = 1000;

/// Takes all messages, the oldest first or the newest of one type after the other.
unsigned takeAll(AssemblerPair& pair, bool oldestFirst) {
  unsigned taken = 0;
  for (; !pair.isEmpty(); ++taken) {
    if (oldestFirst) {
      pair.takeOldest();
    } else {
      pair.takeNewestOf(pair.someType());
    }
  }
  return taken;
}

/// A thousand buffers from a generator of its own, so that any block can be played alone. One
/// builder sees one or more of them, now and then with its counters reset in between.
unsigned playBlock(unsigned block) {
  BufferGenerator generator(block);
  std::optional<AssemblerPair> pair(std::in_place);
  unsigned messages = 0;
  for (unsigned number = 0; number < kBuffersPerBlock; ++number) {
    pair->update(static_cast<unsigned char>(generator.below(256)), generator.nextBuffer());
    const std::size_t fate = generator.below(8);
    if (fate < 6) {
      messages += takeAll(*pair, fate % 2 == 0);
      pair->takeOldest();
      pair->takeNewestOf(0x8300);
      pair.emplace();
    } else if (fate == 7) {
      pair->resetCounters();
    }
  }
  return messages;
}

class RandomBuffers : public testing::TestWithParam<unsigned> {};

TEST_P(RandomBuffers, HaveTheModelsOutcome) {
  for (unsigned block = GetParam(); block < GetParam() + kBlocksPlayedPerTest; ++block) {
    SCOPED_TRACE("block " + std::to_string(block));
    EXPECT_GT(playBlock(block), kBuffersPerBlock) << "messages, so that there is what to compare";
  }
}

INSTANTIATE_TEST_SUITE_P(AssemblerReference, RandomBuffers,
                         testing::Range(0U, kBlocks, kBlocksPerTest),
                         [](const auto& info) { return "FromBlock" + std::to_string(info.param); });

}  // namespace
}  // namespace orb::test
