#include "faults/rule_book.h"

#include <stdexcept>
#include <string>

#include "model/commands.h"

namespace orb::sim {
namespace {

void check(bool good, std::size_t index, const char* problem) {
  if (!good) {
    throw std::invalid_argument("fault rule " + std::to_string(index) + ": " + problem);
  }
}

void check(const FaultRule& rule, std::size_t index) {
  check(rule.first >= 1, index, "occurrences count from 1");
  check(rule.every >= 1, index, "every 0th occurrence is none");
  check(rule.chance >= 0 && rule.chance <= 1, index, "a chance is 0 to 1");
  check(rule.delay.count() >= 0, index, "a delay is not negative");
  check(rule.kind != FaultKind::Pieces || rule.length >= 1, index, "a piece has 1 byte or more");
}

bool isAbout(const FaultRule& rule, const Frame& message) {
  const bool fits = !rule.message || *rule.message == message.id();
  return fits && (rule.kind != FaultKind::WrongValue || isSetting(message.id()));
}

}  // namespace

RuleBook::RuleBook(std::vector<FaultRule> rules, std::uint64_t seed) : seed_(seed) {
  for (const FaultRule& rule : rules) {
    check(rule, entries_.size());
    entries_.push_back({rule});
  }
}

bool RuleBook::isDue(const Entry& entry) {
  const FaultRule& rule = entry.rule;
  return entry.occurrences >= rule.first && (entry.occurrences - rule.first) % rule.every == 0 &&
         entry.hits < rule.times;
}

std::vector<RuleBook::Hit> RuleBook::hitsOn(const Frame& message) {
  std::vector<Hit> hits;
  for (std::size_t index = 0; index < entries_.size(); ++index) {
    Entry& entry = entries_[index];
    if (!isAbout(entry.rule, message)) {
      continue;
    }
    ++entry.occurrences;
    Draw draw(seed_, index, entry.occurrences);
    if (isDue(entry) && draw.fraction() < entry.rule.chance) {
      ++entry.hits;
      hits.push_back({index, entry.rule, draw});
    }
  }
  return hits;
}

}  // namespace orb::sim
