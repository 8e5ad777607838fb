#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "base/plain_text.h"
#include "orbctl/argument.h"
#include "orbctl/command.h"
#include "orbctl/failure.h"
#include "orbctl/results.h"
#include "orbctl/setting_values.h"
#include "orbctl/words.h"

namespace orb::ctl {
namespace {

void explain(const Options& options, unsigned int result) {
  Json meanings = Json::array();
  std::string text = result == 0 ? "0: the operation did what it was asked to\n" : "";
  for (const std::string& line : explainResult(result)) {
    meanings.push_back(line);
    text += line + "\n";
  }
  const std::string whole = explainCombination(result);
  text += whole.empty() ? "" : whole + "\n";
  show(options, "explain", {{"result", result}, {"bits", meanings}, {"meaning", whole}}, text);
}

Value emptyValue(Argument::Type type) {
  switch (type) {
    case Argument::Type::Boolean:
      return false;
    case Argument::Type::Integer:
      return 0LL;
    case Argument::Type::Number:
      return 0.0;
    case Argument::Type::Text:
      break;
  }
  return std::string();
}

Json jsonOf(const Value& value) {
  return std::visit([](const auto& held) { return Json(held); }, value);
}

std::size_t inputsOf(const Operation& operation) {
  std::size_t count = 0;
  for (const Argument& argument : operation.arguments()) {
    count += argument.isOutput ? 0 : 1;
  }
  return count;
}

const Operation& operationFor(const std::string& name, std::size_t inputs) {
  std::vector<std::string> names;
  std::vector<std::size_t> counts;
  for (const Operation& operation : operations()) {
    if (operation.name == name && inputsOf(operation) == inputs) {
      return operation;
    }
    if (operation.name == name) {
      counts.push_back(inputsOf(operation));
    }
    names.emplace_back(operation.name);
  }
  if (!counts.empty()) {
    throw Failure(
        ExitStatus::WrongUse,
        fmt::format("{} takes {} arguments, not {}", name, fmt::join(counts, " or "), inputs),
        fmt::format("see: orbctl operations {}", name));
  }
  const std::string near = nearest(name, names);
  throw Failure(
      ExitStatus::WrongUse, fmt::format("there is no operation '{}'", name),
      near.empty() ? "see all with: orbctl operations" : fmt::format("did you mean {}?", near));
}

/// Any operation, as the library has it.
void callOperation(Session& session, const Options& options, const std::string& name,
                   const std::vector<std::string>& words) {
  const Operation& operation = operationFor(name, words.size());
  Values arguments;
  std::size_t next = 0;
  for (const Argument& argument : operation.arguments()) {
    arguments.push_back(argument.isOutput ? emptyValue(argument.type)
                                          : valueFrom(argument, words[next++]));
  }
  session.requireReceiver();
  const Value result = session.callAnyway(name, arguments);
  Json outputs = Json::object();
  std::string text;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const Argument& argument = operation.arguments()[i];
    if (argument.isOutput) {
      outputs[std::string(argument.name)] = jsonOf(arguments[i]);
      text += fmt::format("{} = {}{}{}\n", argument.name, plain(textOf(jsonOf(arguments[i]))),
                          argument.unit.empty() ? "" : " ", argument.unit);
    }
  }
  const auto* const bits = std::get_if<long long>(&result);
  if (bits != nullptr && *bits != 0 && operation.resultBits != Operation::kNoMask) {
    const auto mask = static_cast<unsigned int>(*bits);
    throw Failure(exitStatusFor(mask), fmt::format("{} returned {}", name, mask),
                  fmt::format("see: orbctl explain {}", mask), mask);
  }
  show(options, "call", {{"operation", name}, {"result", jsonOf(result)}, {"outputs", outputs}},
       fmt::format("result = {}\n{}", plain(textOf(jsonOf(result))), text));
}

std::string signatureOf(const Operation& operation) {
  std::string text = std::string(operation.name) + "(";
  for (const Argument& argument : operation.arguments()) {
    text += fmt::format("{}{}{}", text.back() == '(' ? "" : ", ", argument.isOutput ? "out " : "",
                        argument.name);
  }
  return text + ")";
}

/// An argument as data, and its range in words where it has one.
std::pair<Json, std::string> describeArgument(const Argument& argument) {
  constexpr const char* kTypes[] = {"switch", "integer", "number", "text"};
  Json row{{"name", argument.name},
           {"type", kTypes[static_cast<int>(argument.type)]},
           {"output", argument.isOutput},
           {"unit", argument.unit}};
  const bool isNumber =
      argument.type == Argument::Type::Integer || argument.type == Argument::Type::Number;
  if (!isNumber || argument.isOutput) {
    return {row, {}};
  }
  row["lowest"] = argument.lowest;
  row["highest"] = argument.highest;
  return {row, fmt::format("    {}: {}\n", argument.name, rangeOf(argument))};
}

/// An operation in words, with all that is known of it or in short, and as data.
std::pair<std::string, Json> describeOperation(const Operation& operation, bool isWhole) {
  Json arguments = Json::array();
  std::string ranges;
  for (const Argument& argument : operation.arguments()) {
    auto [row, range] = describeArgument(argument);
    arguments.push_back(std::move(row));
    ranges += range;
  }
  std::string text = fmt::format("{}\n    {}\n", signatureOf(operation), operation.does);
  if (isWhole) {
    text += ranges;
    text += operation.toKnow.empty() ? "" : fmt::format("    {}\n", operation.toKnow);
    text += fmt::format("    takes at most {} ms\n", operation.longestTime().count());
  }
  return {text,
          {{"name", operation.name},
           {"does", operation.does},
           {"arguments", std::move(arguments)},
           {"longest_ms", operation.longestTime().count()},
           {"to_know", operation.toKnow}}};
}

void listOperations(const Options& options, const std::string& name) {
  Json data = Json::array();
  std::string text;
  for (const Operation& operation : operations()) {
    if (name.empty() || operation.name == name) {
      auto [words, row] = describeOperation(operation, !name.empty());
      text += words;
      data.push_back(std::move(row));
    }
  }
  if (data.empty()) {
    operationFor(name, 0);
  }
  show(options, "operations", {{"operations", data}}, text);
}

}  // namespace

void addOperationCommands(CLI::App& app, Action& chosen) {
  const auto words = std::make_shared<std::vector<std::string>>();
  const auto name = std::make_shared<std::string>();
  const auto result = std::make_shared<unsigned int>(0);

  CLI::App* command =
      addCommand(app, "explain", "Says what an operation's result means", chosen,
                 [=](Session&, const Options& options) { explain(options, *result); });
  command->add_option("RESULT", *result, "Such as 13")->required();

  command = addCommand(app, "call", "Calls any operation of the library by its name", chosen,
                       [=](Session& session, const Options& options) {
                         callOperation(session, options, *name, *words);
                       });
  command->add_option("OPERATION", *name, "Its name; orbctl operations lists all")->required();
  command->add_option("ARGUMENT", *words, "Its inputs; on or off for a switch");

  command = addCommand(app, "operations", "Lists the library's operations", chosen,
                       [=](Session&, const Options& options) { listOperations(options, *name); });
  command->add_option("OPERATION", *name, "This one, with all that is known of it");
}

}  // namespace orb::ctl
