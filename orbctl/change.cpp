#include "orbctl/change.h"

#include <fmt/format.h>

#include <algorithm>

#include "orbctl/failure.h"
#include "orbctl/interruption.h"
#include "orbctl/setting_values.h"

namespace orb::ctl {
namespace {

bool isKey(const std::string& word) {
  const auto& all = settings();
  return std::any_of(all.begin(), all.end(),
                     [&](const Setting& setting) { return setting.key == word; });
}

std::string listed(const std::vector<std::string>& list) {
  return list.empty() ? "none" : fmt::format("{}", fmt::join(list, ", "));
}

}  // namespace

std::vector<Change> changesFrom(const std::vector<std::string>& words) {
  std::vector<Change> changes;
  for (std::size_t i = 0; i < words.size(); i += 2) {
    if (i > 0 && !isKey(words[i]) && changes.back().setting->kind == Setting::Kind::Words) {
      throw Failure(ExitStatus::WrongUse, fmt::format("there is no key '{}'", words[i]),
                    fmt::format("separate the words by commas: {},{}", words[i - 1], words[i]));
    }
    const Setting& setting = settingNamed(words[i]);
    if (const std::vector<std::string> before = keysOf(changes);
        std::find(before.begin(), before.end(), words[i]) != before.end()) {
      throw Failure(ExitStatus::WrongUse, fmt::format("{} stands there twice", words[i]));
    }
    if (i + 1 == words.size()) {
      throw Failure(ExitStatus::WrongUse,
                    fmt::format("{} needs a value: {}", words[i], rangeOf(setting)));
    }
    changes.push_back({&setting, valueFrom(setting, words[i + 1])});
  }
  return changes;
}

std::pair<std::string, Json> change(Session& session, const Change& wanted, bool isDry) {
  const Setting& setting = *wanted.setting;
  const Json before = setting.isReadable() ? setting.read(session) : Json();
  Json data{{"old", before}, {"new", wanted.value}, {"changed", before != wanted.value}};
  const std::string arrow = setting.isReadable() ? fmt::format("{} -> {}", textOf(before),
                                                               withUnit(setting, wanted.value))
                                                 : withUnit(setting, wanted.value);
  if (before == wanted.value) {
    return {fmt::format("{}: {} already\n", setting.key, withUnit(setting, before)), data};
  }
  if (isDry) {
    return {fmt::format("{}: would set {}\n", setting.key, arrow), data};
  }
  setting.write(session, wanted.value);
  if (setting.isReadable()) {
    data["new"] = setting.read(session);
    if (data["new"] != wanted.value) {
      throw Failure(ExitStatus::Refused,
                    fmt::format("set to {}, but the receiver keeps {}",
                                withUnit(setting, wanted.value), withUnit(setting, data["new"])),
                    "the receiver refuses this value in its present state");
    }
  }
  return {fmt::format("{}: {}\n", setting.key, arrow), data};
}

std::vector<std::string> keysOf(const std::vector<Change>& changes) {
  std::vector<std::string> keys;
  for (const Change& each : changes) {
    keys.emplace_back(each.setting->key);
  }
  return keys;
}

void makeEach(const std::vector<std::string>& keys, const std::function<bool(std::size_t)>& make) {
  std::vector<std::string> changed;
  const Interruption interruption;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const std::vector<std::string> untried(keys.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                                           keys.end());
    const std::string others =
        fmt::format("; changed before: {}; not tried: {}", listed(changed), listed(untried));
    Interruption::prepare(
        fmt::format("orbctl: interrupted at {}, which may be set or not{}\n", keys[i], others));
    try {
      if (make(i)) {
        changed.push_back(keys[i]);
      }
    } catch (const Failure& failure) {
      throw Failure(
          failure.status(),
          fmt::format("{}: {}{}", keys[i], failure.what(), keys.size() == 1 ? "" : others),
          failure.hint(), failure.resultBits(),
          oneLine({{"failed", keys[i]}, {"changed", changed}, {"not_tried", untried}}));
    }
  }
}

}  // namespace orb::ctl
