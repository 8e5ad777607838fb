#include <string>

#include "model/commands.h"
#include "model/nmea_format.h"
#include "orb-sim/frame.h"
#include "scenario/readers.h"

namespace orb::sim {
namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kLongestPacket = 268;
constexpr std::int64_t kMostNoise = 4096;
constexpr std::int64_t kMostSentences = 1000;
constexpr std::int64_t kMostBytes = 65'000;

/// What a kind of fault takes.
struct Kind {
  FaultKind kind;
  bool target = false;
  bool delay = false;
  std::int64_t longest = 0;  ///< of `length`; 0: it takes none
};

constexpr Word<Kind> kKinds[] = {
    {"no-reply", {.kind = FaultKind::NoReply, .target = true}},
    {"late-reply", {.kind = FaultKind::LateReply, .target = true, .delay = true}},
    {"refusal", {.kind = FaultKind::Refusal}},
    {"wrong-id", {.kind = FaultKind::WrongId, .target = true}},
    {"bad-checksum", {.kind = FaultKind::BadChecksum, .target = true}},
    {"cut-short", {.kind = FaultKind::CutShort, .target = true, .longest = kLongestPacket}},
    {"overlong-length", {.kind = FaultKind::OverlongLength, .target = true, .longest = kMostBytes}},
    {"doubled", {.kind = FaultKind::Doubled, .target = true}},
    {"pieces",
     {.kind = FaultKind::Pieces, .target = true, .delay = true, .longest = kLongestPacket}},
    {"noise-before", {.kind = FaultKind::NoiseBefore, .target = true, .longest = kMostNoise}},
    {"noise-inside", {.kind = FaultKind::NoiseInside, .target = true, .longest = kMostNoise}},
    {"nmea-burst", {.kind = FaultKind::NmeaBurst, .target = true, .longest = kMostSentences}},
    {"wrong-value", {.kind = FaultKind::WrongValue}},
    {"silence", {.kind = FaultKind::Silence}},
    {"hang-up", {.kind = FaultKind::HangUp}},
    {"slow-restart", {.kind = FaultKind::SlowRestart, .delay = true}},
};

constexpr Word<FaultTarget> kTargets[] = {
    {"reply", FaultTarget::Reply},
    {"acknowledgement", FaultTarget::Acknowledgement},
    {"both", FaultTarget::Both},
};

/// A message that a client can send has an id byte, and a sub-id byte only where there is one.
bool isMessage(std::int64_t number) {
  return number > 0xFF && number <= 0xFFFF &&
         (hasSubId(static_cast<std::uint8_t>(number >> 8)) || (number & 0xFF) == 0);
}

void readMessage(TableReader& fault, FaultRule& rule) {
  constexpr char kKey[] = "message";
  constexpr char kAccepted[] =
      "; it has to be a number without quotes such as 0x6501, or a name such as "
      "\"query-update-rate\"";
  const toml::node* node = fault.find(kKey);
  if (node == nullptr) {
    return;
  }
  std::string found = typeName(*node);
  if (const auto number = node->value_exact<std::int64_t>()) {
    if (isMessage(*number)) {
      rule.message = static_cast<std::uint16_t>(*number);
      return;
    }
    found = format("0x%04llX, which is no message", static_cast<unsigned long long>(*number));
  } else if (const auto name = node->value_exact<std::string>()) {
    if (const Command* const command = findCommand(*name)) {
      rule.message = command->id;
      return;
    }
    found = inQuotes(*name) + ", which is no message";
  }
  fault.refuse(kKey, "is " + found + kAccepted);
}

/// A key that the kind of fault needs or takes no notice of has to be there accordingly.
void checkUse(TableReader& fault, std::string_view key, bool used) {
  if (used) {
    fault.require({key});
  } else if (fault.has(key)) {
    fault.refuse(key, "means nothing to this kind of fault; it has to be left out");
  }
}

/// What the fault does.
void readDeed(TableReader& fault, FaultRule& rule) {
  std::optional<Kind> kind;
  fault.require({"kind"});
  fault.word("kind", kind, kKinds);
  fault.word("target", rule.target, kTargets);
  fault.duration("delay", rule.delay, 1ms, 24h);
  fault.integer("length", rule.length, 1, kind && kind->longest != 0 ? kind->longest : kMostBytes);
  if (!kind) {
    return;
  }
  rule.kind = kind->kind;
  checkUse(fault, "delay", kind->delay);
  checkUse(fault, "length", kind->longest != 0);
  if (!kind->target) {
    checkUse(fault, "target", false);
  }
  if (rule.kind == FaultKind::WrongValue && rule.message && !isSetting(*rule.message)) {
    fault.refuse("message", "sets nothing; it has to be a setting for this kind of fault");
  }
}

/// When the fault occurs.
void readOccasion(TableReader& fault, FaultRule& rule) {
  constexpr std::int64_t kMost = 1'000'000'000;
  readMessage(fault, rule);
  fault.integer("first", rule.first, 1, kMost);
  fault.integer("every", rule.every, 1, kMost);
  fault.integer("times", rule.times, 1, kMost);
  fault.number("chance", rule.chance, 0, 1);
}

}  // namespace

void readFault(TableReader& fault, std::vector<FaultRule>& rules) {
  FaultRule rule;
  readOccasion(fault, rule);
  readDeed(fault, rule);
  rules.push_back(rule);
}

}  // namespace orb::sim
