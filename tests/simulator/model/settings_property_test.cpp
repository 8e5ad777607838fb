#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "hex.h"
#include "orb-sim/receiver.h"

namespace orb::sim::test {
namespace {

/// One setting, as its user knows it: what is set comes back behind the reply's id.
struct Row {
  std::uint16_t setting;
  std::uint16_t query;
  std::uint16_t reply;
  const char* factory;            ///< body that the query reports before anything is set
  std::size_t unpredictable = 0;  ///< bytes at the end of the reply that are measured, not set
};

const Row kRows[] = {
    {0x0C00, 0x1500, 0xB900, "00"},
    {0x0E00, 0x1000, 0x8600, "01"},
    {0x2A00, 0x2E00, 0xAF00, "00 01 2C 01 2C 01 2C"},
    {0x2B00, 0x2F00, 0xB000, "01 05 00"},
    {0x4500, 0x4600, 0xBB00, "00 00 00 00"},
    {0x5400, 0x4400, 0xC200,
     "00 00 00 07 D0 00 00 00 1E 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00", 5},
    {0x5500, 0x5600, 0xC300, "00 00"},
    {0x6201, 0x6202, 0x6280, "01 01 08 01 03 07"},
    {0x6203, 0x6204, 0x6281, "01 03"},
    {0x6402, 0x6403, 0x6481, "01 01 01 01 01 01 01 00 00 00 00 00"},
    {0x6406, 0x6407, 0x6483, "00", 1},
    {0x6411, 0x6412, 0x6488, "00 00"},
    {0x6417, 0x6418, 0x648B, "00"},
    {0x6419, 0x641A, 0x648C, "00 03"},
    {0x642F, 0x6430, 0x6498, "01"},
    {0x6450, 0x6451, 0x649F, "00"},
    {0x6501, 0x6502, 0x6580, "00 00 03 E8"},
    {0x6503, 0x6504, 0x6581, "00 00 00 00"},
};

/// A user who keeps a note of everything, beside the receiver.
class User {
 public:
  explicit User(unsigned int seed) : random_(seed) { forget(); }

  void step() {
    const auto choice = random_() % 100;
    const Row& row = kRows[random_() % std::size(kRows)];
    if (choice < 45) {
      set(row);
    } else if (choice < 90) {
      query(row);
    } else if (choice < 93) {
      receiver_.tick(std::chrono::milliseconds(random_() % 500));
    } else if (choice < 96) {
      makeNoise();
    } else if (choice < 99) {
      EXPECT_EQ(say(frame(0x7000, randomBytes(random_() % 40))), refuse(0x7000));
    } else {
      EXPECT_EQ(say(frame(0x0400, {1})), acknowledge(0x0400));
      forget();
    }
  }

  void queryEverything() {
    for (const Row& row : kRows) {
      query(row);
    }
  }

 private:
  void set(const Row& row) {
    Bytes body = randomBytes(notes_[row.setting].size());
    notes_[row.setting] = body;
    body.push_back(static_cast<std::uint8_t>(random_()));
    EXPECT_EQ(say(frame(row.setting, body)), acknowledge(row.setting));
  }

  void query(const Row& row) {
    const Bytes answer = say(frame(row.query));
    const Bytes acknowledgement = acknowledge(row.query);
    ASSERT_GT(answer.size(), acknowledgement.size());
    const auto middle = answer.begin() + static_cast<std::ptrdiff_t>(acknowledgement.size());
    EXPECT_EQ(Bytes(answer.begin(), middle), acknowledgement);

    const std::vector<Frame> replies = FrameReader().push(Bytes(middle, answer.end()));
    ASSERT_EQ(replies.size(), 1U);
    EXPECT_EQ(replies[0].id(), row.reply);
    Bytes body = replies[0].body();
    ASSERT_GE(body.size(), row.unpredictable);
    body.resize(body.size() - row.unpredictable);
    EXPECT_EQ(body, notes_[row.setting]) << "message " << std::hex << row.setting;
  }

  /// Bytes without a start byte, so that nothing behind them is lost.
  void makeNoise() {
    Bytes noise = randomBytes(random_() % 20);
    std::replace(noise.begin(), noise.end(), std::uint8_t{0xA0}, std::uint8_t{0xA1});
    EXPECT_EQ(receiver_.receive(noise), Bytes{});
  }

  /// Sends a packet in two pieces.
  Bytes say(const Bytes& packet) {
    const auto middle =
        packet.begin() + static_cast<std::ptrdiff_t>(random_() % (packet.size() + 1));
    const Bytes early = receiver_.receive(Bytes(packet.begin(), middle));
    return early + receiver_.receive(Bytes(middle, packet.end()));
  }

  Bytes randomBytes(std::size_t count) {
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) {
      byte = static_cast<std::uint8_t>(random_());
    }
    return bytes;
  }

  void forget() {
    for (const Row& row : kRows) {
      notes_[row.setting] = hex(row.factory);
    }
  }

  std::mt19937 random_;
  Receiver receiver_;
  std::map<std::uint16_t, Bytes> notes_;
};

class RandomSettingsAndQueries : public testing::TestWithParam<unsigned int> {};

TEST_P(RandomSettingsAndQueries, AgreeWithAPlainMap) {
  User user(GetParam());
  user.queryEverything();
  for (int step = 0; step < 5000 && !testing::Test::HasFailure(); ++step) {
    user.step();
  }
  user.queryEverything();
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomSettingsAndQueries, testing::Range(1U, 9U));

}  // namespace
}  // namespace orb::sim::test
