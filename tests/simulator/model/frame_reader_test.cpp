#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "orb-sim/frame.h"
#include "support/hex_text.h"

namespace orb::test {
namespace {

const Bytes kQuery = hex("A0 A1 00 02 02 01 03 0D 0A");
const Bytes kRateQuery = hex("A0 A1 00 01 10 10 0D 0A");

std::vector<Bytes> payloads(const std::vector<sim::Frame>& frames) {
  std::vector<Bytes> payloads;
  for (const sim::Frame& frame : frames) {
    payloads.push_back(frame.payload);
  }
  return payloads;
}

const std::vector<Bytes> kBothPayloads{hex("02 01"), hex("10")};

TEST(FrameReader, FindsTheGoodFramesAndCountsTheRest) {
  const Bytes noise = hex("0D 0A A1 A0 00 A1");
  const std::vector<Bytes> query{hex("02 01")};
  const std::vector<Bytes> rateQuery{hex("10")};
  const auto withEnd = [](const char* end) {
    return hex("A0 A1 00 02 02 01 03") + hex(end) + kRateQuery;
  };
  const auto withLength = [](const char* length) { return hex("A0 A1") + hex(length) + kQuery; };
  const struct {
    const char* what;
    Bytes stream;
    std::vector<Bytes> payloads;
    std::array<std::size_t, 5> counts;  // frames, bad lengths, checksums and ends, skipped bytes
  } kRows[] = {
      {"two frames", kQuery + kRateQuery, kBothPayloads, {2, 0, 0, 0, 0}},
      {"noise", noise + kQuery + noise + kRateQuery + noise, kBothPayloads, {2, 0, 0, 0, 18}},
      {"repeated start byte", hex("A0 A0 A0") + kQuery, query, {1, 0, 0, 0, 3}},
      {"bad checksum", hex("A0 A1 00 02 02 01 04 0D 0A") + kRateQuery, rateQuery, {1, 0, 1, 0, 9}},
      {"end 0A 0D", withEnd("0A 0D"), rateQuery, {1, 0, 0, 1, 9}},
      {"end 0D 0D", withEnd("0D 0D"), rateQuery, {1, 0, 0, 1, 9}},
      {"end 0A 0A", withEnd("0A 0A"), rateQuery, {1, 0, 0, 1, 9}},
      {"length 0", withLength("00 00"), query, {1, 1, 0, 0, 4}},
      {"length 262", withLength("01 06"), query, {1, 1, 0, 0, 4}},
      {"length 512", withLength("02 00"), query, {1, 1, 0, 0, 4}},
      {"length 65535", withLength("FF FF"), query, {1, 1, 0, 0, 4}},
      // It claims twelve bytes; at the checksum's place is a byte of the next frame.
      {"frames inside a bad one",
       hex("A0 A1 00 0C 02 01") + kQuery + kRateQuery,
       kBothPayloads,
       {2, 0, 1, 0, 6}},
  };
  for (const auto& row : kRows) {
    sim::FrameReader reader;
    EXPECT_EQ(payloads(reader.push(row.stream)), row.payloads) << row.what;
    const auto& [frames, badLengths, badChecksums, badEnds, skippedBytes] = reader.counts();
    EXPECT_EQ((std::array{frames, badLengths, badChecksums, badEnds, skippedBytes}), row.counts)
        << row.what;
    EXPECT_FALSE(reader.midFrame()) << row.what;
  }
}

TEST(FrameReader, PutsTogetherAStreamThatIsSplitAnywhere) {
  const Bytes stream = hex("00 A0") + kQuery + hex("FF") + kRateQuery;
  for (std::size_t split = 0; split <= stream.size(); ++split) {
    sim::FrameReader reader;
    const auto middle = stream.begin() + static_cast<std::ptrdiff_t>(split);
    std::vector<sim::Frame> frames = reader.push(Bytes(stream.begin(), middle));
    for (sim::Frame& frame : reader.push(Bytes(middle, stream.end()))) {
      frames.push_back(std::move(frame));
    }
    EXPECT_EQ(payloads(frames), kBothPayloads) << "split at " << split;
    EXPECT_EQ(reader.counts().skippedBytes, 3U) << "split at " << split;
  }
}

TEST(FrameReader, TakesTheShortestAndTheLongestFrame) {
  sim::FrameReader reader;
  Bytes longest(sim::FrameReader::kLongestPayload, 0x5A);
  longest[0] = 0x61;
  EXPECT_EQ(payloads(reader.push(kRateQuery + sim::Frame{longest}.packet())),
            (std::vector<Bytes>{hex("10"), longest}));
}

TEST(FrameReader, WaitsForTheRestUntilTheFrameIsAbandoned) {
  sim::FrameReader reader;
  EXPECT_TRUE(reader.push(hex("A0 A1 00 FF") + kQuery).empty());
  EXPECT_TRUE(reader.midFrame());
  EXPECT_EQ(payloads(reader.abandon()), std::vector<Bytes>{hex("02 01")});
  EXPECT_FALSE(reader.midFrame());
  EXPECT_EQ(reader.counts().skippedBytes, 4U);
}

TEST(FrameReader, AbandonsNothingWhereNothingHasBegun) {
  sim::FrameReader reader;
  reader.push(kQuery);
  EXPECT_TRUE(reader.abandon().empty());
  EXPECT_EQ(reader.counts().skippedBytes, 0U);
}

/// Noise that holds many start bytes, plausible lengths, and here and there a good frame.
Bytes mutatedStream(std::mt19937& random, std::size_t& goodFrames) {
  constexpr std::array<std::uint8_t, 6> kTelling{0xA0, 0xA1, 0x00, 0x02, 0x0D, 0x0A};
  Bytes stream;
  while (stream.size() < 2000) {
    const auto choice = random() % 8;
    if (choice == 0) {
      stream = stream + kQuery;
      ++goodFrames;
    } else if (choice < 5) {
      stream.push_back(kTelling[random() % kTelling.size()]);
    } else {
      stream.push_back(static_cast<std::uint8_t>(random()));
    }
  }
  return stream;
}

TEST(FrameReader, LosesNoGoodFrameAndNoByteInNoise) {
  std::mt19937 random(1);
  for (int round = 0; round < 400; ++round) {
    sim::FrameReader reader;
    std::size_t goodFrames = 0;
    const Bytes stream = mutatedStream(random, goodFrames);
    std::size_t queries = 0;
    std::size_t frameBytes = 0;
    const auto take = [&](const std::vector<sim::Frame>& frames) {
      for (const sim::Frame& frame : frames) {
        queries += frame.packet() == kQuery ? 1U : 0U;
        frameBytes += frame.packet().size();
      }
    };
    for (std::size_t begin = 0; begin < stream.size();) {
      const std::size_t end = std::min(stream.size(), begin + 1 + random() % 300);
      take(reader.push(Bytes(stream.begin() + static_cast<std::ptrdiff_t>(begin),
                             stream.begin() + static_cast<std::ptrdiff_t>(end))));
      begin = end;
    }
    while (reader.midFrame()) {
      take(reader.abandon());
    }
    EXPECT_GE(queries, goodFrames);
    EXPECT_EQ(frameBytes + reader.counts().skippedBytes, stream.size());
  }
}

}  // namespace
}  // namespace orb::test
