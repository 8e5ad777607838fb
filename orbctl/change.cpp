#include "orbctl/change.h"

#include <fmt/format.h>

#include "orbctl/failure.h"
#include "orbctl/setting_values.h"

namespace orb::ctl {

std::vector<Change> changesFrom(const std::vector<std::string>& words) {
  std::vector<Change> changes;
  for (std::size_t i = 0; i < words.size(); i += 2) {
    const Setting& setting = settingNamed(words[i]);
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
  for (std::size_t i = 0; i < keys.size(); ++i) {
    try {
      if (make(i)) {
        changed.push_back(keys[i]);
      }
    } catch (const Failure& failure) {
      const std::vector<std::string> untried(keys.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                                             keys.end());
      const auto listed = [](const std::vector<std::string>& list) {
        return list.empty() ? "none" : fmt::format("{}", fmt::join(list, ", "));
      };
      const std::string others =
          fmt::format("; changed before: {}; not tried: {}", listed(changed), listed(untried));
      throw Failure(
          failure.status(),
          fmt::format("{}: {}{}", keys[i], failure.what(), keys.size() == 1 ? "" : others),
          failure.hint(), failure.resultBits(),
          oneLine({{"failed", keys[i]}, {"changed", changed}, {"not_tried", untried}}));
    }
  }
}

}  // namespace orb::ctl
