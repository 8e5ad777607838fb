#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "hex.h"
#include "orb-sim/frame.h"

namespace orb::sim::test {
namespace {

const Bytes kQuery = hex("A0 A1 00 02 02 01 03 0D 0A");
const Bytes kRateQuery = hex("A0 A1 00 01 10 10 0D 0A");

std::vector<Bytes> payloads(const std::vector<Frame>& frames) {
  std::vector<Bytes> payloads;
  for (const Frame& frame : frames) {
    payloads.push_back(frame.payload);
  }
  return payloads;
}

const std::vector<Bytes> kBothPayloads{hex("02 01"), hex("10")};

TEST(FrameReader, FindsFramesBackToBack) {
  FrameReader reader;
  EXPECT_EQ(payloads(reader.push(kQuery + kRateQuery)), kBothPayloads);
  EXPECT_EQ(reader.counts().frames, 2U);
  EXPECT_EQ(reader.counts().skippedBytes, 0U);
  EXPECT_FALSE(reader.midFrame());
}

TEST(FrameReader, PutsTogetherAStreamThatIsSplitAnywhere) {
  const Bytes stream = hex("00 A0") + kQuery + hex("FF") + kRateQuery;
  for (std::size_t split = 0; split <= stream.size(); ++split) {
    FrameReader reader;
    const auto middle = stream.begin() + static_cast<std::ptrdiff_t>(split);
    std::vector<Frame> frames = reader.push(Bytes(stream.begin(), middle));
    for (Frame& frame : reader.push(Bytes(middle, stream.end()))) {
      frames.push_back(std::move(frame));
    }
    EXPECT_EQ(payloads(frames), kBothPayloads) << "split at " << split;
    EXPECT_EQ(reader.counts().skippedBytes, 3U) << "split at " << split;
  }
}

TEST(FrameReader, PutsTogetherSingleBytes) {
  FrameReader reader;
  std::vector<Frame> frames;
  for (const std::uint8_t byte : kQuery + kRateQuery) {
    for (Frame& frame : reader.push({byte})) {
      frames.push_back(std::move(frame));
    }
  }
  EXPECT_EQ(payloads(frames), kBothPayloads);
}

TEST(FrameReader, SkipsNoiseBeforeBetweenAndAfter) {
  FrameReader reader;
  const Bytes noise = hex("0D 0A A1 A0 00 A1");
  EXPECT_EQ(payloads(reader.push(noise + kQuery + noise + kRateQuery + noise)), kBothPayloads);
  EXPECT_EQ(reader.counts().skippedBytes, 18U);
  EXPECT_FALSE(reader.midFrame());
}

TEST(FrameReader, KeepsAFrameBehindARepeatedStartByte) {
  FrameReader reader;
  EXPECT_EQ(payloads(reader.push(hex("A0 A0 A0") + kQuery)), std::vector<Bytes>{hex("02 01")});
  EXPECT_EQ(reader.counts().skippedBytes, 3U);
}

TEST(FrameReader, DropsAFrameWithABadChecksum) {
  FrameReader reader;
  EXPECT_EQ(payloads(reader.push(hex("A0 A1 00 02 02 01 04 0D 0A") + kRateQuery)),
            std::vector<Bytes>{hex("10")});
  EXPECT_EQ(reader.counts().badChecksums, 1U);
  EXPECT_EQ(reader.counts().skippedBytes, 9U);
}

TEST(FrameReader, DropsAFrameWithWrongEndBytes) {
  for (const char* end : {"0A 0D", "0D 0D", "0A 0A"}) {
    FrameReader reader;
    EXPECT_EQ(payloads(reader.push(hex("A0 A1 00 02 02 01 03") + hex(end) + kRateQuery)),
              std::vector<Bytes>{hex("10")});
    EXPECT_EQ(reader.counts().badEnds, 1U) << end;
    EXPECT_EQ(reader.counts().skippedBytes, 9U) << end;
  }
}

TEST(FrameReader, TakesALengthOfZeroOrAboveTheLongestForNoise) {
  for (const char* length : {"00 00", "01 06", "02 00", "FF FF"}) {
    FrameReader reader;
    EXPECT_EQ(payloads(reader.push(hex("A0 A1") + hex(length) + kQuery)),
              std::vector<Bytes>{hex("02 01")})
        << length;
    EXPECT_EQ(reader.counts().badLengths, 1U) << length;
    EXPECT_EQ(reader.counts().skippedBytes, 4U) << length;
  }
}

TEST(FrameReader, TakesTheShortestAndTheLongestFrame) {
  FrameReader reader;
  Bytes longest(FrameReader::kLongestPayload, 0x5A);
  longest[0] = 0x61;
  EXPECT_EQ(payloads(reader.push(kRateQuery + Frame{longest}.packet())),
            (std::vector<Bytes>{hex("10"), longest}));
}

TEST(FrameReader, FindsTheGoodFrameInsideABadOne) {
  FrameReader reader;
  // Claims twelve bytes; the checksum position holds a byte of what follows.
  const Bytes bad = hex("A0 A1 00 0C 02 01");
  EXPECT_EQ(payloads(reader.push(bad + kQuery + kRateQuery)), kBothPayloads);
  EXPECT_EQ(reader.counts().badChecksums, 1U);
  EXPECT_EQ(reader.counts().skippedBytes, 6U);
}

TEST(FrameReader, WaitsForTheRestUntilTheFrameIsAbandoned) {
  FrameReader reader;
  EXPECT_TRUE(reader.push(hex("A0 A1 00 FF") + kQuery).empty());
  EXPECT_TRUE(reader.midFrame());
  EXPECT_EQ(payloads(reader.abandon()), std::vector<Bytes>{hex("02 01")});
  EXPECT_FALSE(reader.midFrame());
  EXPECT_EQ(reader.counts().skippedBytes, 4U);
}

TEST(FrameReader, AbandonsNothingWhereNothingHasBegun) {
  FrameReader reader;
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

class FrameReaderOnNoise : public testing::TestWithParam<unsigned int> {};

TEST_P(FrameReaderOnNoise, LosesNoGoodFrameAndNoByte) {
  std::mt19937 random(GetParam());
  for (int round = 0; round < 50; ++round) {
    FrameReader reader;
    std::size_t goodFrames = 0;
    const Bytes stream = mutatedStream(random, goodFrames);
    std::size_t queries = 0;
    std::size_t frameBytes = 0;
    const auto take = [&](const std::vector<Frame>& frames) {
      for (const Frame& frame : frames) {
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

INSTANTIATE_TEST_SUITE_P(Seeds, FrameReaderOnNoise, testing::Range(1U, 9U));

}  // namespace
}  // namespace orb::sim::test
