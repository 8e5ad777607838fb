#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

#include "model/messages.h"
#include "orb-sim/frame.h"
#include "scenario/message_names.h"
#include "scenario/readers.h"

namespace orb::sim {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kLongestChatter = 1000;

/// What a kind of fault takes.
struct Kind {
  FaultKind kind;
  bool delay;
  std::int64_t longest;  ///< of `length`; 0: it takes none
  bool target;
};

constexpr std::int64_t kLongestPacket = 268;
constexpr std::int64_t kLongest = 65'000;

constexpr Word<Kind> kKinds[] = {
    {"no-reply", {FaultKind::NoReply, false, 0, true}},
    {"late-reply", {FaultKind::LateReply, true, 0, true}},
    {"refusal", {FaultKind::Refusal, false, 0, false}},
    {"wrong-id", {FaultKind::WrongId, false, 0, true}},
    {"bad-checksum", {FaultKind::BadChecksum, false, 0, true}},
    {"cut-short", {FaultKind::CutShort, false, kLongestPacket, true}},
    {"overlong-length", {FaultKind::OverlongLength, false, kLongest, true}},
    {"doubled", {FaultKind::Doubled, false, 0, true}},
    {"pieces", {FaultKind::Pieces, true, kLongestPacket, true}},
    {"noise-before", {FaultKind::NoiseBefore, false, 4096, true}},
    {"noise-inside", {FaultKind::NoiseInside, false, 4096, true}},
    {"nmea-burst", {FaultKind::NmeaBurst, false, 1000, true}},
    {"wrong-value", {FaultKind::WrongValue, false, 0, false}},
    {"silence", {FaultKind::Silence, false, 0, false}},
    {"hang-up", {FaultKind::HangUp, false, 0, false}},
    {"slow-restart", {FaultKind::SlowRestart, true, 0, false}},
};

constexpr Word<FaultTarget> kTargets[] = {
    {"reply", FaultTarget::Reply},
    {"acknowledgement", FaultTarget::Acknowledgement},
    {"both", FaultTarget::Both},
};

void readBaud(Section& line, unsigned int& baud) {
  constexpr std::int64_t kRates[] = {4800,    9600,    19'200,  38'400, 57'600,
                                     115'200, 230'400, 460'800, 921'600};
  constexpr char kKey[] = "baud";
  const auto isUsual = [&] {
    return std::find(std::begin(kRates), std::end(kRates), baud) != std::end(kRates);
  };
  if (line.integer(kKey, baud, 0) && !isUsual()) {
    std::vector<std::string> rates;
    for (const std::int64_t rate : kRates) {
      rates.push_back(std::to_string(rate));
    }
    line.refuse(kKey, "is " + std::to_string(baud) + "; it has to be " + alternatives(rates));
  }
}

std::string hexText(std::int64_t number) {
  std::array<char, 20> text{};
  std::snprintf(text.data(), text.size(), "0x%04llX", static_cast<unsigned long long>(number));
  return text.data();
}

/// A message that a client can send has an id byte, and a sub-id byte only where there is one.
bool isMessage(std::int64_t number) {
  return number > 0xFF && number <= 0xFFFF &&
         (hasSubId(static_cast<std::uint8_t>(number >> 8)) || (number & 0xFF) == 0);
}

void readMessage(Section& fault, FaultRule& rule) {
  constexpr char kKey[] = "message";
  constexpr char kAccepted[] =
      "; it has to be a number such as 0x6501 or 0x1000, or a name such as \"query-update-rate\"";
  const toml::node* node = fault.find(kKey);
  if (node == nullptr) {
    return;
  }
  if (const auto number = node->value_exact<std::int64_t>()) {
    if (isMessage(*number)) {
      rule.message = static_cast<std::uint16_t>(*number);
    } else {
      fault.refuse(kKey, "is " + hexText(*number) + ", which is no message" + kAccepted);
    }
  } else if (const auto name = node->value_exact<std::string>()) {
    rule.message = messageNamed(*name);
    if (!rule.message) {
      fault.refuse(kKey, "is " + inQuotes(*name) + ", which is no message" + kAccepted);
    }
  } else {
    fault.refuse(kKey, "is " + std::string(typeName(*node)) + kAccepted);
  }
}

/// A key that the kind of fault needs or takes no notice of has to be there accordingly.
void checkUse(Section& fault, std::string_view key, bool used) {
  if (used) {
    fault.require({key});
  } else if (fault.has(key)) {
    fault.refuse(key, "means nothing to this kind of fault; it has to be left out");
  }
}

/// What the fault does.
void readDeed(Section& fault, FaultRule& rule) {
  std::optional<Kind> kind;
  fault.require({"kind"});
  fault.word("kind", kind, kKinds);
  fault.word("target", rule.target, kTargets);
  fault.duration("delay", rule.delay, 1ms, 24h);
  fault.integer("length", rule.length, 1, kind && kind->longest != 0 ? kind->longest : kLongest);
  if (!kind) {
    return;
  }
  rule.kind = kind->kind;
  checkUse(fault, "delay", kind->delay);
  checkUse(fault, "length", kind->longest != 0);
  if (!kind->target) {
    checkUse(fault, "target", false);
  }
  if (rule.kind == FaultKind::WrongValue && rule.message && findSetting(*rule.message) == nullptr) {
    fault.refuse("message", "sets nothing; it has to be a setting for this kind of fault");
  }
}

/// When the fault occurs.
void readOccasion(Section& fault, FaultRule& rule) {
  constexpr std::int64_t kMost = 1'000'000'000;
  readMessage(fault, rule);
  fault.integer("first", rule.first, 1, kMost);
  fault.integer("every", rule.every, 1, kMost);
  fault.integer("times", rule.times, 1, kMost);
  fault.number("chance", rule.chance, 0, 1);
}

}  // namespace

void readLine(Section& line, LineConditions& conditions) {
  line.duration("latency", conditions.latency, 0ms, 1h);
  line.duration("spread", conditions.spread, 0ms, 1h);
  readBaud(line, conditions.baud);
  line.duration("chatter-interval", conditions.chatterInterval, 1ms, 1h);
  line.text("chatter", conditions.chatter, kLongestChatter);
}

void readFault(Section& fault, std::vector<FaultRule>& rules) {
  FaultRule rule;
  readOccasion(fault, rule);
  readDeed(fault, rule);
  rules.push_back(rule);
}

}  // namespace orb::sim
