// The packet assembler against the model in reference/: explicit vectors, and a million random
// buffers by the digests of their results.

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "reference/assembler_session.h"
#include "reference/random_blocks.h"
#include "reference/vector_file.h"

namespace orb::reference {

std::ostream& operator<<(std::ostream& stream, const BlockDigest& digest) {
  return stream << std::hex << std::uppercase << "buffers " << digest.buffers << ", results "
                << digest.results << std::dec << ", " << digest.messages << " messages";
}

namespace {

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

/// Vectors of each group of explicit_vectors.tsv.
const std::map<std::string, std::size_t> kGroups = {
    {"EdgeCases", 47},   {"CatalogueGood", 424},  {"CatalogueSpoilt", 560}, {"CatalogueCut", 2106},
    {"Boundaries", 656}, {"ClaimedLengths", 492}, {"Identities", 304},      {"ModeReports", 57},
    {"Nested", 144},     {"StartBytes", 369},     {"SingleBytes", 448},     {"Repeated", 120},
    {"Mutated", 900}};

void expectOutcome(const ExplicitVector& vector) {
  SCOPED_TRACE(vector.group + ": " + vector.name);
  AssemblerSession session;
  for (std::size_t k = 0; k < vector.buffers.size(); ++k) {
    EXPECT_EQ(session.update(0x83, vector.buffers[k]), vector.results[k])
        << "buffer " << hexText(vector.buffers[k].data(), vector.buffers[k].size());
  }
  const auto taken = session.takeByAge();
  ASSERT_EQ(taken.size(), vector.messages.size());
  for (std::size_t k = 0; k < taken.size(); ++k) {
    SCOPED_TRACE("message " + std::to_string(k) + ", oldest first");
    const auto& expected = vector.messages[taken.size() - 1 - k];
    EXPECT_EQ(taken[k]->getMsgSidId(), expected.type);
    EXPECT_EQ(taken[k]->getMid(), expected.type >> 8);
    EXPECT_EQ(taken[k]->getSid(), expected.type & 0xFF);
    EXPECT_EQ(taken[k]->getPayloadLength(), expected.payloadLength);
    ASSERT_EQ(taken[k]->getPacketLength(), expected.packet.size());
    EXPECT_EQ(hexText(taken[k]->getPacketData(), expected.packet.size()),
              hexText(expected.packet.data(), expected.packet.size()));
  }
}

class ExplicitVectors : public testing::TestWithParam<std::string> {};

TEST_P(ExplicitVectors, HaveTheModelsOutcome) {
  std::size_t count = 0;
  for (const auto& vector : explicitVectors()) {
    if (vector.group == GetParam()) {
      ++count;
      expectOutcome(vector);
    }
  }
  EXPECT_EQ(count, kGroups.at(GetParam()));
}

std::vector<std::string> groupNames() {
  std::vector<std::string> names;
  for (const auto& [name, count] : kGroups) {
    names.push_back(name);
  }
  return names;
}

INSTANTIATE_TEST_SUITE_P(AssemblerReference, ExplicitVectors, testing::ValuesIn(groupNames()),
                         [](const auto& info) { return info.param; });

TEST(ExplicitVectorFile, HasNoGroupThatIsNotTested) {
  for (const auto& vector : explicitVectors()) {
    ASSERT_TRUE(kGroups.contains(vector.group)) << vector.group;
  }
}

class RandomBuffers : public testing::TestWithParam<unsigned> {};

TEST_P(RandomBuffers, HaveTheModelsOutcome) {
  const auto digests = checkedInDigests();
  ASSERT_EQ(digests.size(), kBlocks);
  for (unsigned block = GetParam(); block < GetParam() + kBlocksPlayedPerTest; ++block) {
    const auto played = playBlock(block);
    ASSERT_EQ(digestOf(played), digests[block])
        << "block " << block << "; `generate.py --show " << block << "` prints all of it.\n"
        << "At the first difference " << firstDifference(block, played);
  }
}

INSTANTIATE_TEST_SUITE_P(AssemblerReference, RandomBuffers,
                         testing::Range(0U, kBlocks, kBlocksPerTest),
                         [](const auto& info) { return "FromBlock" + std::to_string(info.param); });

}  // namespace
}  // namespace orb::reference
