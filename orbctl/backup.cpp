#include "orbctl/backup.h"

#include <fmt/format.h>

#include <iostream>
#include <sstream>

#include "base/plain_text.h"
#include "base/toml/text_file.h"
#include "orbctl/argument.h"
#include "orbctl/failure.h"
#include "orbctl/navigation.h"
#include "orbctl/setting_values.h"

namespace orb::ctl {
namespace {

constexpr char kSurveyStatic[] = "setSurveyStatic";
constexpr char kSurveyAuto[] = "setSurveyAuto";

/// A value of the file as the command line would have it, so that both are checked alike.
std::string wordFrom(const toml::node& node, const std::string& key) {
  if (const auto text = node.value_exact<std::string>()) {
    return *text;
  }
  if (const auto flag = node.value_exact<bool>()) {
    return *flag ? "on" : "off";
  }
  if (const auto number = node.value_exact<std::int64_t>()) {
    return std::to_string(*number);
  }
  std::string words;
  if (const toml::array* const array = node.as_array()) {
    for (const toml::node& word : *array) {
      words += (words.empty() ? "" : ",") + word.value_or(std::string());
    }
  }
  if (words.empty()) {
    throw Failure(ExitStatus::WrongUse, fmt::format("{}: not a value of a setting", key));
  }
  return words;
}

/// What is wrong with a value of the file, with the place where it stands.
Failure at(const toml::source_region& place, const std::string& source, const Failure& failure) {
  return {failure.status(),
          fmt::format("{}:{}: {}", source, place.begin.line, plain(failure.what())),
          failure.hint()};
}

/// A receiver can hold what no command sets, such as its factory's DOP mask.
bool canBeSet(const Setting& setting, const Json& value) {
  try {
    return valueFrom(setting, textOf(value)) == value;
  } catch (const Failure&) {
    return false;
  }
}

/// A number of the table, with or without a point. Throws Failure where there is none that the
/// operation takes.
double numberFrom(const toml::table& table, const char* key, const Argument& argument) {
  const std::string name = fmt::format("[survey] {}", key);
  const auto value = table[key].value<double>();
  if (!value) {
    throw Failure(ExitStatus::WrongUse, fmt::format("{} has to be {}", name, rangeOf(argument)),
                  "nothing was sent");
  }
  requireWithin(argument, name, *value);
  return *value;
}

Json surveyFrom(const toml::table& table) {
  const std::string mode = table["mode"].value_or(std::string());
  if (mode != "dynamic" && mode != "auto" && mode != "static") {
    throw Failure(ExitStatus::WrongUse, fmt::format("there is no survey mode '{}'", mode),
                  "it is dynamic, auto or static; nothing was sent");
  }
  Json survey{{"mode", mode}};
  if (mode == "auto") {
    survey["length"] = static_cast<long long>(
        numberFrom(table, "length", argumentOf(kSurveyAuto, "surveyLength")));
  } else if (mode == "static") {
    survey["latitude"] = numberFrom(table, "latitude", argumentOf(kSurveyStatic, "latitude"));
    survey["longitude"] = numberFrom(table, "longitude", argumentOf(kSurveyStatic, "longitude"));
    survey["altitude"] = numberFrom(table, "altitude", argumentOf(kSurveyStatic, "altitude"));
  }
  return survey;
}

/// As readTextFile() does of a file.
std::optional<std::string> standardInput(ProblemList& problems) {
  std::string text(kLongestText + 1, '\0');
  std::cin.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(std::cin.gcount()));
  if (text.size() > kLongestText) {
    problems.add(kTooLong);
    return std::nullopt;
  }
  return text;
}

void insert(toml::table& values, std::string_view key, const Json& value) {
  if (value.is_boolean()) {
    values.insert(key, value.get<bool>());
  } else if (value.is_number()) {
    values.insert(key, value.get<std::int64_t>());
  } else if (value.is_array()) {
    toml::array words;
    for (const Json& word : value) {
      words.push_back(word.get<std::string>());
    }
    values.insert(key, std::move(words));
  } else {
    values.insert(key, value.get<std::string>());
  }
}

}  // namespace

BackupText makeBackup(Session& session, ListReader& reader) {
  BackupText result;
  toml::table values;
  for (const Setting& setting : settings()) {
    const std::string key(setting.key);
    const Json value = setting.isReadable() ? reader.read(setting.key, setting.read) : Json();
    if (!setting.isReadable()) {
      result.leftOut[key] = "no query reads it";
    } else if (value.is_null()) {
      result.leftOut[key] = "the receiver does not tell it";
    } else if (!canBeSet(setting, value)) {
      result.leftOut[key] = fmt::format("no operation sets {}", textOf(value));
    } else {
      insert(values, setting.key, value);
    }
  }
  result.count = values.size();
  const Json survey = readSurvey(session);
  toml::table file{{"settings", std::move(values)},
                   {"survey", toml::table{{"mode", survey["mode"].get<std::string>()},
                                          {"length", survey["length"].get<std::int64_t>()},
                                          {"latitude", survey["latitude"].get<double>()},
                                          {"longitude", survey["longitude"].get<double>()},
                                          {"altitude", survey["altitude"].get<double>()}}}};
  std::ostringstream text;
  for (const auto& [key, reason] : result.leftOut.items()) {
    text << "# Left out: " << key << ", since " << reason.get<std::string>() << '\n';
  }
  text << file << '\n';
  result.text = text.str();
  return result;
}

Backup readBackup(const std::string& file) {
  const std::string source = file == kStandardStream ? "standard input" : file;
  ProblemList problems(source);
  const std::optional<std::string> text =
      file == kStandardStream ? standardInput(problems) : readTextFile(file, problems);
  if (!text) {
    throw Failure(ExitStatus::WrongUse, problems.lines().front());
  }
  return backupFrom(*text, source);
}

Backup backupFrom(const std::string& text, const std::string& source) {
  ProblemList problems(source);
  const std::optional<toml::table> parsed = parseToml(text, problems);
  if (!parsed) {
    throw Failure(ExitStatus::WrongUse, problems.lines().front());
  }
  const toml::table& table = *parsed;
  Backup backup;
  const toml::table* const values = table["settings"].as_table();
  if (values == nullptr) {
    throw Failure(ExitStatus::WrongUse, fmt::format("{} has no table [settings]", source),
                  "write one with: orbctl backup FILE");
  }
  for (const auto& [name, node] : *values) {
    const std::string key(name.str());
    try {
      backup.settings.emplace_back(key, valueFrom(settingNamed(key), wordFrom(node, key)));
    } catch (const Failure& failure) {
      throw at(node.source(), source, failure);
    }
  }
  if (const toml::table* const survey = table["survey"].as_table()) {
    try {
      backup.survey = surveyFrom(*survey);
    } catch (const Failure& failure) {
      throw at(survey->source(), source, failure);
    }
  }
  return backup;
}

bool isSurveyAsIn(Session& session, const Backup& backup) {
  if (backup.survey.is_null()) {
    return true;
  }
  const Json now = readSurvey(session);
  const std::string mode = now["mode"].get<std::string>();
  if (mode != backup.survey["mode"].get<std::string>()) {
    return false;
  }
  // A mode other than static surveys its position itself.
  const auto same = [&](const char* key) { return now[key] == backup.survey[key]; };
  // The receiver holds the altitude in single precision.
  const auto altitude = [](const Json& survey) { return survey["altitude"].get<float>(); };
  return mode == "static"
             ? same("latitude") && same("longitude") && altitude(now) == altitude(backup.survey)
             : mode != "auto" || same("length");
}

void restoreSurvey(Session& session, const Backup& backup) {
  const Json& survey = backup.survey;
  const std::string mode = survey["mode"].get<std::string>();
  constexpr double kDeviation = 1;  // only checked: the receiver keeps its own
  if (mode == "static") {
    session.call(kSurveyStatic,
                 {survey["latitude"].get<double>(), survey["longitude"].get<double>(),
                  survey["altitude"].get<double>(), kDeviation});
  } else if (mode == "auto") {
    session.call(kSurveyAuto, {survey["length"].get<long long>(), kDeviation});
  } else {
    session.call("setSurveyDynamic");
  }
}

}  // namespace orb::ctl
