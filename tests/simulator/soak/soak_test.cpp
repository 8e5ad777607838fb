#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <map>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include "operations/operations.h"
#include "orb-sim/faults.h"
#include "orb-sim/frame.h"
#include "orb-sim/line_conditions.h"
#include "orb-sim/receiver.h"
#include "support/allocations.h"
#include "support/captured_output.h"
#include "support/device_files.h"
#include "support/simulated_line.h"

namespace orb::test {
namespace {

using namespace std::chrono_literals;

constexpr int kShards = 4;
constexpr int kOperationsPerSession = 500;

// Longer than any operation takes, and than any fault lasts.
constexpr std::chrono::seconds kLongestOperation{120};
constexpr std::chrono::seconds kLongestFault{8};

// Sequences of more exchanges hardly ever come through as a whole.
constexpr std::size_t kFewReplies = 2;

// What is written last reaches the receiver only when time passes.
constexpr std::chrono::milliseconds kDelivery{50};

int sessionsPerShard() {
  const char* const wanted = std::getenv("ORB_SOAK_EXCHANGES");
  const int exchanges = wanted == nullptr ? ORB_SOAK_EXCHANGES : std::atoi(wanted);
  return std::max(1, exchanges / (kShards * kOperationsPerSession));
}

sim::FaultRule rule(sim::FaultKind kind, sim::FaultTarget target, double chance,
                    std::size_t length = 0, std::chrono::milliseconds delay = 0ms) {
  sim::FaultRule rule{kind, target};
  rule.chance = chance;
  rule.length = length;
  rule.delay = delay;
  return rule;
}

/// Everything that can go wrong while bytes flow. A line that falls silent for ever is left out: on
/// it, a call does not return.
std::vector<sim::FaultRule> mixedFaults() {
  using Kind = sim::FaultKind;
  using Target = sim::FaultTarget;
  std::vector<sim::FaultRule> rules{
      rule(Kind::NoReply, Target::Reply, 0.02),
      rule(Kind::NoReply, Target::Both, 0.01),
      rule(Kind::LateReply, Target::Reply, 0.02, 0, 700ms),
      rule(Kind::LateReply, Target::Both, 0.01, 0, 7s),
      rule(Kind::Refusal, Target::Both, 0.02),
      rule(Kind::WrongId, Target::Reply, 0.02),
      rule(Kind::BadChecksum, Target::Reply, 0.02),
      rule(Kind::BadChecksum, Target::Acknowledgement, 0.01),
      rule(Kind::CutShort, Target::Reply, 0.02, 6),
      rule(Kind::OverlongLength, Target::Reply, 0.01, 3),
      rule(Kind::OverlongLength, Target::Both, 0.01, 300),
      rule(Kind::Doubled, Target::Both, 0.02),
      rule(Kind::Pieces, Target::Both, 0.02, 2, 30ms),
      rule(Kind::NoiseBefore, Target::Reply, 0.02, 7),
      rule(Kind::NoiseInside, Target::Reply, 0.02, 3),
      rule(Kind::NmeaBurst, Target::Both, 0.02, 4),
      rule(Kind::WrongValue, Target::Reply, 0.05),
      rule(Kind::SlowRestart, Target::Reply, 0.01, 0, 2s),
  };
  // The settings that are read back over a channel of their own.
  for (const int setting : {0x0E00, 0x5400, 0x5500, 0x6201, 0x6203, 0x6417, 0x6419}) {
    sim::FaultRule hangUp = rule(Kind::HangUp, Target::Reply, 0.05);
    hangUp.message = static_cast<std::uint16_t>(setting);
    rules.push_back(hangUp);
  }
  return rules;
}

sim::LineConditions busyLine() {
  sim::LineConditions line;
  line.latency = 3ms;
  line.spread = 10ms;
  line.chatterInterval = 100ms;
  return line;
}

/// Keeps what the receiver itself has said.
class ReceiverRecord : public sim::Device {
 public:
  explicit ReceiverRecord(sim::Device& receiver) : receiver_(receiver) {}

  sim::Bytes receive(const sim::Bytes& bytes) override { return keep(receiver_.receive(bytes)); }
  sim::Bytes tick(std::chrono::milliseconds elapsed) override {
    return keep(receiver_.tick(elapsed));
  }
  std::chrono::milliseconds untilNextOutput() const override { return receiver_.untilNextOutput(); }

  bool hasSaid(const sim::Bytes& payload) const { return said_.count(payload) == 1; }
  void forget() { said_.clear(); }

 private:
  sim::Bytes keep(const sim::Bytes& output) {
    sim::FrameReader reader;
    for (sim::Frame& frame : reader.push(output)) {
      said_.insert(std::move(frame.payload));
    }
    return output;
  }

  sim::Device& receiver_;
  std::set<sim::Bytes> said_;
};

/// Whether some bytes look like one of these messages with a fitting checksum, and the receiver has
/// not said it. A client that takes them for a reply cannot know better.
bool deceives(const sim::Bytes& bytes, const std::vector<std::uint16_t>& messages,
              const ReceiverRecord& receiver) {
  constexpr std::size_t kHeader = 4;
  constexpr std::size_t kEnd = 2;
  for (std::size_t i = 0; i + kHeader + 1 < bytes.size(); ++i) {
    const std::size_t length = static_cast<std::size_t>(bytes[i + 2]) << 8 | bytes[i + 3];
    if (bytes[i] != 0xA0 || length == 0 || i + kHeader + length >= bytes.size()) {
      continue;
    }
    const auto start = bytes.begin() + static_cast<std::ptrdiff_t>(i);
    const auto body = start + kHeader;
    const sim::Frame frame{sim::Bytes(body, body + static_cast<std::ptrdiff_t>(length))};
    const sim::Bytes packet = frame.packet();
    if (std::equal(packet.begin(), packet.end() - kEnd, start) &&
        std::count(messages.begin(), messages.end(), frame.id()) > 0 &&
        !receiver.hasSaid(frame.payload)) {
      return true;
    }
  }
  return false;
}

/// What the operations of many sessions came to.
struct Tally {
  int operations = 0;
  int succeeded = 0;
  int untroubled = 0;  ///< no fault fell on them
  int deceived = 0;
  std::map<sim::FaultKind, int> faults;
  std::map<std::string, int> succeededByName;
  std::vector<std::string> failures;
};

/// One driver and one receiver, with mixed faults between them.
class Session {
 public:
  Session(unsigned int seed, Tally& tally) : seed_(seed), numbers_(seed), tally_(tally) {}

  void carryOutAll() {
    try {
      for (count_ = 0; count_ < kOperationsPerSession; ++count_) {
        carryOut(nextOperation());
        letTheLineSettleNowAndThen();
      }
    } catch (const WaitsForEver&) {
      tally_.failures.push_back(place_ + " does not return");
    }
    for (const sim::FaultyDevice::Event& event : faulty_.events()) {
      ++tally_.faults[rules_[event.rule].kind];
    }
  }

 private:
  void carryOut(const Operation& operation) {
    place_ = "seed " + std::to_string(seed_) + ", operation " + std::to_string(count_) + ": " +
             operation.name;
    const std::size_t eventsBefore = faulty_.events().size();
    const Drawn drawn = operation.draw(numbers_);
    record_.forget();
    line_.forget();
    line_.setLimit(kLongestOperation);
    const Outcome outcome = drawn.call(driver_);
    line_.pass(kDelivery);
    const std::vector<sim::FaultyDevice::Event> all = faulty_.events();
    const std::vector<sim::FaultyDevice::Event> events(
        all.begin() + static_cast<std::ptrdiff_t>(eventsBefore), all.end());
    const bool agrees =
        outcome.result == drawn.result && isTrue(operation, outcome.outputs, receiver_.state()) &&
        settingsOf(after(drawn, receiver_.state())) == settingsOf(receiver_.state());
    ++tally_.operations;
    if (outcome.result == 0) {
      ++tally_.succeeded;
      ++tally_.succeededByName[operation.name];
      if (!agrees) {
        judgeFalseSuccess(operation, drawn, events);
      }
    }
    isQuiet_ = isQuiet_ && events.empty();
    tally_.untroubled += isQuiet_ ? 1 : 0;
    if (isQuiet_ && !agrees) {
      tally_.failures.push_back(place_ + " gave " + std::to_string(outcome.result) +
                                " without a fault");
    }
  }

  /// Each operation in turn, in an order that is drawn anew for each round.
  const Operation& nextOperation() {
    if (round_.empty()) {
      for (const Operation& operation : operations()) {
        const auto place = numbers_.between<std::ptrdiff_t>(0, static_cast<int>(round_.size()));
        round_.insert(round_.begin() + place, &operation);
      }
    }
    const Operation& next = *round_.back();
    round_.pop_back();
    return next;
  }

  /// On a troubled line, a setting that did not arrive, or was kept otherwise, goes unseen where it
  /// is not read back. An acknowledgement tells at least that it was not refused.
  void judgeFalseSuccess(const Operation& operation, const Drawn& drawn,
                         const std::vector<sim::FaultyDevice::Event>& events) {
    const bool isUnseen =
        operation.readBack && operation.readBack(after(drawn, receiver_.state())) ==
                                  operation.readBack(receiver_.state());
    const bool isAcknowledged = operation.replies == std::vector<std::uint16_t>{0x8300};
    const bool isKeptOtherwise = std::any_of(events.begin(), events.end(), [&](const auto& event) {
      return rules_[event.rule].kind == sim::FaultKind::WrongValue;
    });
    const bool isExcused = isUnseen && (isKeptOtherwise || !isAcknowledged);
    if (!isExcused && deceives(line_.delivered(), operation.replies, record_)) {
      ++tally_.deceived;
    } else if (!isExcused) {
      tally_.failures.push_back(place_ + " took a wrong value for success");
    }
  }

  void letTheLineSettleNowAndThen() {
    line_.setLimit(2 * kLongestFault);
    if (numbers_.coin()) {
      line_.pass(kLongestFault);
      isQuiet_ = true;
    }
  }

  const unsigned int seed_;
  Numbers numbers_;
  Tally& tally_;
  DeviceFiles files_;
  const std::vector<sim::FaultRule> rules_ = mixedFaults();
  sim::Receiver receiver_;
  ReceiverRecord record_{receiver_};
  sim::FaultyDevice faulty_{record_, rules_, seed_};
  sim::LineShaper shaper_{faulty_, busyLine(), seed_};
  SimulatedLine line_{shaper_, files_.tty};
  orbController_QN4470T01 driver_;
  std::vector<const Operation*> round_;
  int count_ = 0;        ///< of operations
  std::string place_;    ///< where this is, for messages
  bool isQuiet_ = true;  ///< nothing of an earlier fault is still on its way
};

class Soak : public testing::TestWithParam<int> {
 protected:
  static std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  }

  /// In the long run neither memory nor the processor's time grows. Of few sessions there is no
  /// long run; the tally itself takes a block for each name that is new in it.
  static void expectThatTheyAreFlat(const std::vector<long>& blocks,
                                    const std::vector<std::chrono::duration<double>>& costs) {
    constexpr std::size_t kLongRun = 20;
    constexpr long kTally = 150;
    EXPECT_LE(blocks.back(), blocks.front() + kTally);
    if (costs.size() < kLongRun) {
      return;
    }
    const auto tenth = static_cast<std::ptrdiff_t>(costs.size() / 10);
    const auto sum = [](auto first, auto last) {
      return std::accumulate(first, last, std::chrono::duration<double>::zero());
    };
    EXPECT_LT(sum(costs.end() - tenth, costs.end()), 2 * sum(costs.begin(), costs.begin() + tenth));
    EXPECT_EQ(blocks.back(), blocks[blocks.size() / 2]);
  }
};

std::chrono::duration<double> processorTime() {
  return std::chrono::duration<double>(static_cast<double>(std::clock()) / CLOCKS_PER_SEC);
}

TEST_P(Soak, NeverTakesAWrongValueForSuccessWhereAChecksumCanTell) {
  Tally tally;
  const std::ptrdiff_t descriptors = openDescriptors();
  std::vector<long> blocks;                          // that are in use after each session
  std::vector<std::chrono::duration<double>> costs;  // of each, in time of the processor
  {
    const CapturedOutput standardOutput(1);
    const CapturedOutput standardError(2);
    const int sessions = sessionsPerShard();
    blocks.reserve(static_cast<std::size_t>(sessions));
    costs.reserve(static_cast<std::size_t>(sessions));
    for (int i = 0; i < sessions; ++i) {
      const std::chrono::duration<double> start = processorTime();
      Session(static_cast<unsigned int>(1 + GetParam() + kShards * i), tally).carryOutAll();
      costs.push_back(processorTime() - start);
      blocks.push_back(liveAllocations());
    }
    std::fflush(stdout);  // what the library has printed goes where it is captured
  }
  EXPECT_EQ(openDescriptors(), descriptors);
  expectThatTheyAreFlat(blocks, costs);
  EXPECT_THAT(tally.failures, testing::IsEmpty());
  std::cout << tally.operations << " operations, " << tally.succeeded << " succeeded, "
            << tally.untroubled << " met no fault, " << tally.deceived
            << " were deceived by a fitting checksum; " << blocks.front() << " blocks in use after "
            << costs.front() << ", " << blocks.back() << " after the last " << costs.back() << "\n";

  // The test is worth something: everything happened, and most went well.
  for (int kind = 0; kind <= static_cast<int>(sim::FaultKind::SlowRestart); ++kind) {
    if (static_cast<sim::FaultKind>(kind) != sim::FaultKind::Silence) {
      EXPECT_GT(tally.faults[static_cast<sim::FaultKind>(kind)], 0) << "kind " << kind;
    }
  }
  for (const Operation& operation : operations()) {
    if (operation.replies.size() <= kFewReplies) {
      EXPECT_GT(tally.succeededByName[operation.name], 0) << operation.name;
    }
  }
  EXPECT_GT(tally.untroubled, tally.operations / 4);
  EXPECT_LT(tally.succeeded, tally.operations * 9 / 10);
  EXPECT_LT(tally.deceived, tally.operations / 100 + 1);
}

INSTANTIATE_TEST_SUITE_P(Shard, Soak, testing::Range(0, kShards));

}  // namespace
}  // namespace orb::test
